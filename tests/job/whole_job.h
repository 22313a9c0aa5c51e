#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>

#include "support/temporary_folder.h"

namespace halvern::testing_support {

// An installation in a folder of its own: links to the program and the header description.
class WholeJob : public testing::Test {
protected:
    WholeJob() {
        std::filesystem::create_directory(folder.path() / "bin");
        std::filesystem::create_directory(folder.path() / "header");
        std::filesystem::create_symlink(HALVERN_JOB_PROGRAM, program);
        std::filesystem::create_symlink(HALVERN_SOURCE_DIR "/header/default",
                                        folder.path() / "header/default");
    }

    // Runs the flow and gives the exit status; `log` has the log, stamps masked, root as ROOT.
    int run(const std::string& flow_text, const std::string& before = "") {
        const std::string flow = folder.write("flow1", flow_text);
        return start(before + quoted(program) + " " + quoted(folder.file("log1")) + " rv3086 " +
                     quoted(flow) + " extra");
    }
    int start(const std::string& command) {
        std::filesystem::remove(folder.file("log1"));
        const int status = std::system((command + " 2>" + quoted(folder.file("stderr"))).c_str());
        errors = file_bytes(folder.file("stderr"));
        log.clear();
        if (std::filesystem::exists(folder.file("log1"))) log = file_bytes(folder.file("log1"));
        log = std::regex_replace(
            log, std::regex("at '[A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}'"),
            "at 'TIME'");
        for (std::size_t at; (at = log.find(folder.path().string())) != std::string::npos;) {
            log.replace(at, folder.path().string().size(), "ROOT");
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    static std::string quoted(const std::string& text) { return "'" + text + "'"; }
    /// None where the job ended before it made the folder.
    std::size_t scratch_files() const {
        std::error_code none;
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.path() / "scratch", none),
                          std::filesystem::directory_iterator()));
    }

    TemporaryFolder folder;
    std::string program = folder.file("bin/halvern2");
    std::string log, errors;
};

}  // namespace halvern::testing_support
