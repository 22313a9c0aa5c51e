// The example flows of the item pages, as a user would copy them.

#include <gmock/gmock.h>

#include <fstream>
#include <set>

#include "job/whole_job.h"
#include "synthetic/synthesize_files.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::EndsWith;
namespace fs = std::filesystem;

struct Page {
    const char* name;
    std::vector<std::string> makes;
};

// In an order in which a page finds what the pages before it made.
const std::vector<Page> kPages = {
    {"halvern-data-disk-output", {"line"}},
    {"halvern-data-disk-input", {"line.sgy"}},
    {"write-coordinate-file", {"line.s", "line.r", "line.x"}},
    {"merge-sps", {"located.sgy"}},
    {"merge-p1", {"located.sgy"}},
    {"trace-binning", {"binned.sgy"}},
    {"ascii-data-output", {"geometry.txt"}},
    {"ascii-data-input", {"located.sgy"}},
    {"segy-tape-output", {"line7.tap"}},
    {"segy-tape-input", {}},
    {"segy-disk-input", {}},
    {"segy-disk-output", {"line-agc.sgy"}},
    {"agc", {"line-agc.sgy"}},
    {"attribute", {"line-envelope.sgy"}},
    {"deconvolution", {"line-decon.sgy"}},
    {"filter", {"line-filtered.sgy"}},
    {"linear-moveout", {"line-lmo.sgy"}},
    {"mute", {"line-muted.sgy"}},
    {"normal-moveout", {"line-nmo.sgy"}},
    {"resample", {"line-4ms.sgy"}},
    {"stack", {"stack.sgy"}},
    {"time-shift", {"line-shifted.sgy"}},
    {"trace-header-math", {"line-math.sgy"}},
    {"trace-math", {"line-reversed.sgy"}},
    {"trace-mix", {"line-mixed.sgy"}},
    {"trace-select", {"line-selected.sgy"}},
    {"trace-sort", {"stack.sgy"}},
    {"trace-window", {"line-window.sgy"}},
};
const std::set<std::string> kLeftOut = {
    "segd-tape-input",  // SEG-D tapes come from recorders only
};

std::string page_path(const std::string& name) {
    return std::string(HALVERN_SOURCE_DIR "/docs/items/") + name + ".md";
}

// The indented blocks after "## Example" that begin with an item.
std::vector<std::string> example_flows(const std::string& page) {
    std::ifstream in(page_path(page));
    std::vector<std::string> flows;
    bool example = false, block = false;
    for (std::string text; std::getline(in, text);) {
        if (text.starts_with("## ")) example = text == "## Example";
        const bool indented = example && text.starts_with("    ");
        if (indented && !block && text[4] == '$') flows.emplace_back();
        block = indented;
        if (indented && !flows.empty()) flows.back() += text.substr(4) + '\n';
    }
    return flows;
}

class PageExamples : public WholeJob {
protected:
    // On land `line`, at sea `raw`, both with records that the pages select.
    PageExamples() {
        synthetic::SyntheticLine land;
        land.shots = 10;
        land.channels = 40;
        land.samples = 1100;
        land.first_ffid = 99;
        write(land, {.segy = folder.file("line.sgy")});
        fs::copy_file(folder.file("line.sgy"), folder.file("line7.sgy"));
        synthetic::SyntheticLine sea;
        sea.marine = true;
        sea.samples = 300;
        write(sea, {.segy = folder.file("raw.sgy"), .p190 = folder.file("line.p190")});
        folder.write("halvern.cfg", "TAPEDEVICE=" + folder.file("line7.tap") + " image\n");
    }
    void write(const synthetic::SyntheticLine& line, synthetic::LineFiles files) {
        files.header_definition = HALVERN_SOURCE_DIR "/header/default";
        const Fault fault = synthetic::write_line(line, files);
        EXPECT_FALSE(fault);
    }
    void run_example(std::string flow) {
        for (std::size_t at; (at = flow.find("=/data/")) != std::string::npos;) {
            flow.replace(at + 1, 6, folder.path().string() + '/');
        }
        folder.write("flow1", flow);
        EXPECT_EQ(
            start("cd " + quoted(folder.path().string()) + " && bin/halvern2 log1 rv3086 flow1"),
            0);
        EXPECT_THAT(log, EndsWith("Job completed normally at 'TIME'\n"));
    }
};

TEST_F(PageExamples, Run) {
    for (const Page& page : kPages) {
        SCOPED_TRACE(page.name);
        const auto flows = example_flows(page.name);
        EXPECT_FALSE(flows.empty());
        for (const std::string& flow : flows) {
            for (const std::string& made : page.makes) fs::remove_all(folder.path() / made);
            run_example(flow);
            for (const std::string& made : page.makes) {
                EXPECT_TRUE(fs::exists(folder.path() / made)) << made;
            }
        }
    }
}

TEST(PageExamplesTable, HasEveryPage) {
    std::set<std::string> known = kLeftOut, pages;
    for (const Page& page : kPages) known.insert(page.name);
    for (const auto& entry : fs::directory_iterator(HALVERN_SOURCE_DIR "/docs/items")) {
        pages.insert(entry.path().stem().string());
    }
    EXPECT_EQ(pages, known);
}

}  // namespace
}  // namespace halvern
