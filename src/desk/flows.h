#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "flow/flow_document.h"

namespace halvern {

/// Names of the flows in the current prospect, in order; only those that flow_path() takes.
std::vector<std::string> flow_names();

/// Path of a flow: a text with "/" is a file; else a name in the prospect's flow directory.
std::string flow_path(const std::string& name);

/// The flow in a file; CommandError when it cannot be read.
FlowDocument read_flow(const std::string& path);

/// Makes a flow file. CommandError when there is one and it is not to be replaced.
void make_flow(const std::string& path, const FlowDocument& flow, bool replace);

/// Reads a flow, changes it and writes it back, with nobody else in between: of two commands that
/// change one flow at a time, the second waits. False when `change` left it as it was.
bool change_flow(const std::string& path, const std::function<void(FlowDocument&)>& change);

void remove_flow(const std::string& path);

/// Adds an item with the values of "KEY=VALUE" texts, before the item `before` or at the end.
void add_item(FlowDocument& flow, const std::string& keyword,
              const std::vector<std::string>& assignments,
              const std::optional<std::string>& before);
/// Moves an item before another one, or to the end.
void move_item(FlowDocument& flow, const std::string& item,
               const std::optional<std::string>& before);

}  // namespace halvern
