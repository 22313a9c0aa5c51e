#pragma once

#include <functional>
#include <string>
#include <vector>

#include "flow/parameter.h"

namespace halvern {

class FlowItem;

/// The words around an item's parameter window that do not follow from its name.
struct DialogTexts {
    std::string title;       ///< "AGC Parameters"
    std::string help_title;  ///< "SEGY Disk Input Help"; empty: none
    std::string help_page;   ///< "SEGY Parameters"; empty: none
    std::string already_up;  ///< "AGC Interface is already up."
};

/// An item's parameter window as data: what to ask, in which order, and the variables behind it.
/// Valid as long as the item lives.
struct ParameterDialog {
    const FlowItem* item;
    DialogTexts texts;
    ParameterList fields;  ///< only those with a label, in window order
    /// Why the window must stay open with the values as they are, or an empty text.
    std::function<std::string()> refuse;
    int* flow_changed;  ///< set to 1 by Accept; may be null
};

/// Shows parameter windows and messages. Toolkit-neutral: the job has none, the front door brings a
/// terminal or windows, tests a fake. The host owns which windows are up: Accept checks `refuse`,
/// sets *flow_changed to 1 and closes, Cancel leaves the variables as they were and closes.
class DialogHost {
public:
    virtual ~DialogHost() = default;
    virtual bool IsUp(const FlowItem& item) const = 0;
    virtual void Open(ParameterDialog dialog) = 0;
    virtual void ShowMessage(const std::string& text) = 0;
};

/// The process-wide host; null (the start value) means that no window can be shown.
DialogHost* CurrentDialogHost();
void SetDialogHost(DialogHost* host);

}  // namespace halvern
