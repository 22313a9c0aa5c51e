#pragma once

#include <span>
#include <string>
#include <vector>

namespace halvern {

/// A key of halvern.cfg as `halvern config` explains and checks it.
struct ConfigurationKey {
    enum class Sort { kText, kMegabytes, kDirectory, kTapeDevice };
    const char* key;
    Sort sort;
    bool repeats;  ///< may stand several times
    const char* meaning;
    int least = 0;  ///< of megabytes
};
std::span<const ConfigurationKey> configuration_keys();

/// The text of a configuration file with some values changed, the rest as it is: "KEY=VALUE" sets
/// a value (several of a key that repeats make its whole list), "KEY+=VALUE" adds one to a list.
/// CommandError when a key is not known or a value cannot be used.
std::string edited_configuration(const std::string& text,
                                 const std::vector<std::string>& assignments);

}  // namespace halvern
