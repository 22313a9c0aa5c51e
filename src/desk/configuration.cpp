#include "desk/configuration.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>

#include "desk/command_error.h"
#include "desk/flow_parameters.h"
#include "desk/workplace.h"
#include "foundation/global_config.h"
#include "foundation/words.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

using Sort = ConfigurationKey::Sort;

constexpr std::ptrdiff_t kMostRepeats = GlobalConfig::kMostDirectories;
static_assert(GlobalConfig::kMostDevices == GlobalConfig::kMostDirectories);

// In the order of the file.
constexpr ConfigurationKey kKeys[] = {
    {"SCRATCHDIR", Sort::kDirectory, false, "temporary files and logs of jobs"},
    {"MINDISKSPACE", Sort::kMegabytes, false, "MB to keep free on a data disk"},
    {"MAXFILESIZE", Sort::kMegabytes, false, "MB of one native data file", 1},
    {"FONTSMALL", Sort::kText, false, "font of the windows"},
    {"FONTMEDIUM", Sort::kText, false, "font of the windows"},
    {"FONTLARGE", Sort::kText, false, "font of the windows"},
    {"FONTFIXEDLIST", Sort::kText, false, "font of the windows"},
    {"FONTLIST", Sort::kText, false, "font of the windows"},
    {"FONTTEXT", Sort::kText, false, "font of the windows"},
    {"FONTFIXEDTEXT", Sort::kText, false, "font of the windows"},
    {"FONTBOTTOMANNO", Sort::kText, false, "font of the displays"},
    {"FONTDISPLAYHEADING", Sort::kText, false, "font of the displays"},
    {"FONTDISPLAYANNO", Sort::kText, false, "font of the displays"},
    {"FONTFACE", Sort::kText, false, "proportional face"},
    {"FIXEDFACE", Sort::kText, false, "fixed-pitch face"},
    {"TAPEDEVICE", Sort::kTapeDevice, true, "tape drive or image: name and type"},
    {"DATADIR", Sort::kDirectory, true, "directory that holds prospects"},
};

const ConfigurationKey& key_named(const std::string& name) {
    std::vector<std::string> keys;
    for (const ConfigurationKey& key : kKeys) {
        if (upper(name) == key.key) return key;
        keys.emplace_back(key.key);
    }
    const std::string near = nearest(name, keys);
    throw CommandError("the configuration has no key '" + name +
                       (near.empty() ? "'; " : "'; did you mean " + near + "? ") +
                       "'halvern config' lists them");
}

// The value as the file holds it.
std::string checked(const ConfigurationKey& key, const std::string& value) {
    const auto refuse = [&](const std::string& reason) {
        throw CommandError(std::string(key.key) + ": '" + value + "' " + reason);
    };
    if (value.find_first_of("\r\n") != std::string::npos) refuse("must be one line");
    std::string result = value;
    switch (key.sort) {
        case Sort::kMegabytes: {
            int number = 0;
            const auto end = std::from_chars(value.data(), value.data() + value.size(), number);
            if (end.ec != std::errc{} || end.ptr != value.data() + value.size()) {
                refuse("is no whole number of megabytes");
            }
            if (number < key.least) refuse("must be at least " + std::to_string(key.least));
            break;
        }
        case Sort::kDirectory: {
            std::error_code error;
            if (!fs::is_directory(value, error)) {
                refuse("is no directory; make it first, by 'mkdir -p'");
            }
            result = fs::absolute(value, error).lexically_normal().string();
            break;
        }
        case Sort::kTapeDevice:
            if (const std::size_t end = value.find_first_of(" ,");
                end == 0 || end == std::string::npos || value[end] != ' ') {
                refuse("is no name and type, as in '/dev/nst0 8mm'");
            }
            break;
        case Sort::kText:
            if (value.size() > GlobalConfig::kLongestFace) refuse("is longer than 80 characters");
            break;
    }
    if (std::string(key.key).size() + 1 + result.size() > 197) refuse("is too long for a line");
    return result;
}

}  // namespace

std::span<const ConfigurationKey> configuration_keys() { return kKeys; }

std::string edited_configuration(const std::string& text,
                                 const std::vector<std::string>& assignments) {
    std::vector<std::string> lines = split_lines(text);
    std::vector<const ConfigurationKey*> replaced;  // lists that a value has begun anew
    for (const std::string& assignment : assignments) {
        auto pair = split_assignment(assignment);
        if (!pair) throw CommandError("'" + assignment + "' is no KEY=VALUE");
        const bool adds = pair->first.ends_with('+');
        if (adds) pair->first.pop_back();
        const ConfigurationKey& key = key_named(pair->first);
        if (adds && !key.repeats) {
            throw CommandError(std::string(key.key) + " has one value; set it by KEY=VALUE");
        }
        const std::string start = std::string(key.key) + "=";
        const std::string line = start + checked(key, pair->second);
        const auto is_key = [&](const std::string& old) { return old.starts_with(start); };
        if (!key.repeats) {  // the last one counts
            const auto last = std::find_if(lines.rbegin(), lines.rend(), is_key);
            if (last == lines.rend()) {
                lines.push_back(line);
            } else {
                *last = line;
            }
            continue;
        }
        if (!adds && std::ranges::find(replaced, &key) == replaced.end()) {
            std::erase_if(lines, is_key);
            replaced.push_back(&key);
        }
        if (std::ranges::count_if(lines, is_key) >= kMostRepeats) {
            throw CommandError(std::string(key.key) + " may occur " + std::to_string(kMostRepeats) +
                               " times; more would be ignored");
        }
        lines.push_back(line);
    }
    std::string result;
    for (const std::string& line : lines) result.append(line).append("\n");
    return result;
}

}  // namespace halvern
