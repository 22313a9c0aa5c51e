#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "flow/flow_document.h"
#include "flow/flow_item.h"

namespace halvern {

/// An item made from a section, of which nothing is heard.
std::unique_ptr<FlowItem> quiet_item(const FlowSection& section);

/// Whether this version has an item of the kind, not only its name.
bool is_available(const FlowItem& item);

/// The parameter of a flow file line "KEY=…", or null. One that is never in a flow file is none.
const Parameter* parameter_of_line(const ParameterList& list, const std::string& line);

/// What is wrong with a value of the parameter as a flow file spells it, or an empty text. Rows are
/// offered to the item, which keeps them.
std::string value_fault(const Parameter& parameter, const std::string& value);

/// The value as the flow file stores it: that of a choice, when its text, or the beginning of a
/// word of it that no other choice has, was given in any case of letters; else as it is.
std::string stored_value(const Parameter& parameter, const std::string& value);

/// The choices as "0 = ALL Traces", one a line.
std::string choices_text(const Parameter& parameter);

/// The unit that a question names: "msec." of "Window Size (in msec.)?"; empty: none.
std::string unit_in(const std::string& prompt);

/// "KEY=VALUE", taken apart; nothing when there is no "=".
std::optional<std::pair<std::string, std::string>> split_assignment(const std::string& text);

/// Gives parameters of a section new values from "KEY=VALUE" texts; several of one key give the
/// rows of a table. CommandError when a key is not the item's or a value is not the key's.
void assign(FlowDocument& flow, std::size_t section, const std::vector<std::string>& assignments);

/// Sections with every parameter at its default.
std::string section_text(FlowItemKind kind);

/// Lets `edit` change an item of the section, and brings what it changed into the text. True when
/// there was anything.
bool edit_item(FlowDocument& flow, std::size_t section, const std::function<void(FlowItem&)>& edit);

}  // namespace halvern
