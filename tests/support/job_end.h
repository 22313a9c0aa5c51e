#pragma once

#include <gtest/gtest.h>

#include <string>

#include "foundation/messages.h"
#include "support/log_capture.h"

namespace halvern::testing_support {

/// Runs `work` and gives the log of it when it ended the job as an error; fails otherwise.
template <class Work>
std::string job_error_log(Work&& work) {
    LogCapture log;
    try {
        work();
    } catch (const JobEnded& end) {
        EXPECT_EQ(end.normal, kJobError);
        return log.text();
    }
    ADD_FAILURE() << "the job went on; its log:\n" << log.text();
    return log.text();
}

}  // namespace halvern::testing_support

/// `statement` ends the job as an error, and the log holds `words`.
#define EXPECT_JOB_ERROR(statement, words)                                                         \
    EXPECT_PRED2([](const std::string& said,                                                       \
                    const std::string& wanted) { return said.find(wanted) != std::string::npos; }, \
                 ::halvern::testing_support::job_error_log([&] { statement; }),                    \
                 std::string(words))
