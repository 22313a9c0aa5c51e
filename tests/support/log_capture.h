#pragma once

#include <cstdio>
#include <string>

#include "foundation/report.h"

namespace halvern::testing_support {

/// Speaks into the log, as the item of a job does.
inline const LogReporter kTestReport{"test"};

/// Everything written to a temporary stream so far.
std::string text_of(std::FILE* stream);

/// Catches what is logged from its construction to its end; captures nest, and
/// what an inner one caught belongs to the outer one, too.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Everything logged so far.
    std::string text() const;

private:
    std::FILE* stream_;
    LogCapture* outer_;
};

}  // namespace halvern::testing_support
