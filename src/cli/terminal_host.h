#pragma once

#include <istream>
#include <ostream>
#include <string>

#include "flow/parameter_dialog.h"

namespace halvern {

/// Asks for an item's parameters one after the other on a terminal: Enter keeps a value, "?" shows
/// the help, "." leaves everything as it was. The process-wide host during its life.
class TerminalHost final : public DialogHost {
public:
    TerminalHost(std::istream& in, std::ostream& out) : in_(in), out_(out) { SetDialogHost(this); }
    ~TerminalHost() override { SetDialogHost(nullptr); }
    TerminalHost(const TerminalHost&) = delete;
    TerminalHost& operator=(const TerminalHost&) = delete;

    bool IsUp(const FlowItem& item) const override { return up_ == &item; }
    /// Asks until the item accepts the values, or the answers end.
    void Open(ParameterDialog dialog) override;
    void ShowMessage(const std::string& text) override;

private:
    enum class Answer { kValue, kKeep, kCancel };

    bool ask_all(const ParameterDialog& dialog);
    bool ask(const Parameter& parameter);
    bool ask_rows(const Parameter& parameter, const Rows& rows);
    void show_question(const Parameter& parameter);
    void show_help(const Parameter& parameter);
    bool take(const Parameter& parameter, const std::string& value);
    Answer answer(const Parameter& parameter, const std::string& prompt, std::string& text);

    std::istream& in_;
    std::ostream& out_;
    const FlowItem* up_ = nullptr;
};

}  // namespace halvern
