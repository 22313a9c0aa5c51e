#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace halvern {

/// Keeps what is logged during its life from the terminal, to be told in the command's own words.
/// Afterwards the log goes to standard error again.
class QuietLog {
public:
    QuietLog();
    ~QuietLog();
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

    /// The sentences so far that were errors or warnings, without their prefixes and final stops.
    std::vector<std::string> errors() const { return sentences("*** ERROR in "); }
    std::vector<std::string> warnings() const { return sentences("*** WARNING in "); }

private:
    std::vector<std::string> sentences(const char* prefix) const;

    std::FILE* file_;  // null: what is logged goes nowhere
};

}  // namespace halvern
