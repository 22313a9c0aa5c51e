#include "desk/flows.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include "desk/command_error.h"
#include "desk/flow_parameters.h"
#include "desk/workplace.h"
#include "foundation/prospect.h"
#include "foundation/words.h"
#include "platform/create_file.h"
#include "platform/replace_file.h"
#include "platform/text_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

// What the file is locked by while it is changed.
FileLock lock_of(const std::string& path) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(10);
    for (;;) {
        Result<FileLock> lock = FileLock::take(path, FileLock::Missing::kFault);
        if (lock) return std::move(*lock);
        if (lock.fault().is_missing()) return {};  // which read_flow says better
        if (lock.fault().code() != std::errc::device_or_resource_busy) {
            throw CommandError("cannot change '" + path + "': " + lock.fault().reason());
        }
        if (Clock::now() > end) {
            throw CommandError("another command is changing '" + path + "'; try again");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void write_flow(const std::string& path, const FlowDocument& flow, FileLock* lock) {
    if (const Fault fault = replace_file(path, flow.text(), Reach::kDisk, lock)) {
        throw CommandError("Cannot write flow to '" + path +
                           "'.\nCheck disk space and permissions on this directory.\n"
                           "The system's reason: " +
                           fault.reason());
    }
}

std::size_t place_before(const FlowDocument& flow, const std::optional<std::string>& before) {
    return before ? required(flow.find(*before)) : flow.sections().size();
}

}  // namespace

std::vector<std::string> flow_names() {
    std::vector<std::string> names = file_names(CurrentProspect().path("flow"));
    std::erase_if(names, [](const std::string& name) { return !is_usable_name(name); });
    return names;
}

std::string flow_path(const std::string& name) {
    const bool is_path = name.find_first_of("/\\") != std::string::npos;
    if (is_path && is_one_line(name)) return name;
    if (!is_usable_name(name)) {
        throw CommandError("'" + name +
                           "' cannot name a flow; a file elsewhere is named with a '/', as in "
                           "./" +
                           name);
    }
    return CurrentProspect().path("flow", name);
}

FlowDocument read_flow(const std::string& path) {
    const Result<std::string> text = read_text_file(path);
    if (text) return FlowDocument(*text);
    if (!text.fault().is_missing()) {
        throw CommandError("cannot read '" + path + "': " + text.fault().reason());
    }
    throw CommandError("there is no flow '" + path +
                       "'; 'halvern flow list' names those there are, 'halvern flow new' makes "
                       "one");
}

void make_flow(const std::string& path, const FlowDocument& flow, bool replace) {
    // Of two commands that make a flow of one name, one gets it.
    const std::error_code taken = replace ? std::error_code() : create_exclusively(path);
    if (taken == std::errc::file_exists) {
        throw CommandError("there is a flow '" + path + "' already; --force would replace it");
    }
    try {
        write_flow(path, flow, nullptr);
    } catch (const CommandError&) {
        std::error_code ignored;
        if (!replace && !taken) fs::remove(path, ignored);
        throw;
    }
}

bool change_flow(const std::string& path, const std::function<void(FlowDocument&)>& change) {
    FileLock lock = lock_of(path);
    FlowDocument flow = read_flow(path);
    const std::string before = flow.text();
    change(flow);
    if (flow.text() == before) return false;
    write_flow(path, flow, &lock);
    return true;
}

void remove_flow(const std::string& path) {
    const FileLock lock = lock_of(path);
    (void)read_flow(path);  // nothing else than a flow is removed
    std::error_code error;
    if (!fs::remove(path, error)) {
        throw CommandError("cannot remove '" + path + "': " + error.message());
    }
}

void add_item(FlowDocument& flow, const std::string& keyword,
              const std::vector<std::string>& assignments,
              const std::optional<std::string>& before) {
    FlowDocument added(section_text(required(kind_named(keyword))));
    assign(added, 0, assignments);
    flow.insert(place_before(flow, before), added.text());
}

void move_item(FlowDocument& flow, const std::string& item,
               const std::optional<std::string>& before) {
    const std::size_t from = required(flow.find(item));
    std::size_t to = place_before(flow, before);
    if (to == from) return;
    const std::string section = flow.remove(from);
    flow.insert(to > from ? to - 1 : to, section);
}

}  // namespace halvern
