#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

/// Catches what is logged during its life, so that a command says in its own words what matters.
/// Afterwards the log goes to standard error again.
class CapturedLog {
public:
    CapturedLog();
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// Everything logged so far, line by line.
    std::vector<std::string> lines() const;
    /// The sentences so far that were errors or warnings, without their prefixes and final stops.
    std::vector<std::string> errors() const { return sentences("*** ERROR in "); }
    std::vector<std::string> warnings() const { return sentences("*** WARNING in "); }

private:
    std::vector<std::string> sentences(const char* prefix) const;

    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> stream_;  // null: there is none, and the log goes nowhere
};

}  // namespace halvern
