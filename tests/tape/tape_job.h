#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "flow/input_flow_item.h"
#include "foundation/global_config.h"
#include "foundation/system_paths.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"
#include "tape/tape_prompt.h"

namespace halvern::testing_support {

/// An operator who answers with a list of deeds; a deed that changes the tape accepts, an empty
/// one, or none left, refuses.
class ListedOperator final : public TapePrompt {
public:
    bool Ask(const TapeQuestion& question) override {
        questions += question.text + " [" + question.accept + "|" + question.refuse + "]\n";
        if (deeds.empty()) return false;
        const std::function<void()> deed = std::exchange(deeds.front(), {});
        deeds.pop_front();
        if (deed) deed();
        return static_cast<bool>(deed);
    }
    std::deque<std::function<void()>> deeds;
    std::string questions;
};

/// An installation with one tape image, and flows of an input and what it sends.
class TapeJob : public testing::Test {
protected:
    TapeJob() {
        SetSystemDirectory(folder.path().string());
        folder.write("header/default", file_bytes(HALVERN_SOURCE_DIR "/header/default"));
        LogCapture quiet;
        CurrentConfig() = GlobalConfig();
        CurrentConfig().read_line(("TAPEDEVICE=" + image + " image\n").c_str());
    }
    ~TapeJob() override {
        SetTapePrompt(nullptr);
        CurrentConfig() = GlobalConfig();
        SetSystemDirectory("");
    }

    template <class Input>
    void run(std::vector<std::string> lines) {
        LogCapture capture;
        traces.clear();
        ended_in_error = false;
        try {
            Input input({.lines = std::move(lines)}, LogFlag::kLog);
            auto sink = std::make_unique<CaptureItem>();
            CaptureItem* const kept = sink.get();
            input.SetNext(std::move(sink));
            try {
                input.RunInput();
            } catch (const JobEnded& end) {
                ended_in_error = end.normal == kJobError;
            }
            traces = kept->traces;
            line_samples = kept->line_samples;
            line_interval_us = kept->line_interval_us;
        } catch (const JobEnded&) {
            ended_in_error = true;
        }
        job_log = capture.text();
    }
    /// A word of a trace that was sent, counted from 0.
    double header_word(std::size_t trace, const char* name) {
        TraceHeaderDefinition definition(traces.at(trace).header.data());
        EXPECT_EQ(definition.load(DefaultHeaderPath()), 0);
        return definition.get_double(definition.find(name));
    }

    TemporaryFolder folder;
    const std::string image = folder.file("tape.tap");
    std::vector<PassedTrace> traces;
    int line_samples = 0;
    int line_interval_us = 0;
    bool ended_in_error = false;
    std::string job_log;
};

}  // namespace halvern::testing_support
