#pragma once

#include <string>
#include <vector>

#include "foundation/progress.h"

namespace halvern::testing_support {

/// Writes down what a piece of work tells, and asks it to stop from `stop_at` percent on.
struct ProgressWatcher : Progress {
    std::vector<std::string> captions;
    std::vector<int> percents;
    int finished = 0;
    int stop_at = 101;

    void Start(const char* caption) override { captions.emplace_back(caption); }
    bool Update(int percent) override {
        percents.push_back(percent);
        return percent < stop_at;
    }
    void Finish() override { ++finished; }
};

}  // namespace halvern::testing_support
