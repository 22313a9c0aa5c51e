#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/table.h"
#include "desk/command_error.h"
#include "foundation/words.h"
#include "segd/image_files.h"
#include "tape/image_tools.h"
#include "tape/segy_tape_source.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Examples:
  halvern image make tape1.tap record_*.segd
      puts SEG-D files on an image as a recorder would on tape, one file each.
  halvern config TAPEDEVICE+='tape1.tap image'
      lets flows read it: DEVICE=tape1.tap in SEG-D or SEG-Y Tape Input.
  halvern image list tape1.tap
  halvern image extract tape1.tap --into folder)";

struct Options {
    std::string image;
    std::vector<std::string> files;
    std::string kind = "auto";
    std::string folder = ".";
    std::string stem = "file";
    std::string extension;
    bool replace = false;
    bool csv = false;
};

void stop_at(const std::string& fault) {
    if (!fault.empty()) throw CommandError(fault);
}

// The first bytes of a SEG-D record are decimal digits or, with a storage unit label, digits and
// blanks in ASCII.
bool is_segy(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    char first = 0;
    if (!stream.get(first)) throw CommandError("cannot read '" + file + "'");
    return first != ' ' && begins_text_header(static_cast<std::byte>(first));
}

void make(const Options& options) {
    const auto split = [&](const std::string& file, const auto& block) {
        const bool segy = options.kind == "segy" || (options.kind == "auto" && is_segy(file));
        return segy ? split_segy(file, block)
                    : segd::split_records(file, segd::Dialect::kOther, block);
    };
    stop_at(make_image(options.files, options.image, options.replace, split));
    std::printf("wrote %s: %s\n", options.image.c_str(),
                counted(static_cast<long long>(options.files.size()), "tape file").c_str());
}

void list(const Options& options) {
    Table table({{"tape file", true},
                 {"block", true},
                 "what",
                 {"count", true},
                 {"bytes each", true},
                 {"at byte", true}});
    const auto text = [](std::int64_t number) { return std::to_string(number); };
    const std::string fault = list_image(options.image, [&](const ImageRun& run) {
        table.print_full(options.csv);
        switch (run.item) {
            case TapeImageItem::kBlock:
            case TapeImageItem::kBadBlock:
                table.add({text(run.file), text(run.first_block),
                           run.item == TapeImageItem::kBlock ? "block" : "bad block",
                           text(run.count), text(run.length), text(run.offset)});
                break;
            case TapeImageItem::kFilemark:
                table.add({text(run.file), "", "filemark", text(run.count), "", text(run.offset)});
                break;
            case TapeImageItem::kEndOfData:
                table.add({"", "", "end of data", "", "", text(run.offset)});
                break;
            case TapeImageItem::kFault:
                table.add({"", "", "FAULT", "", "", text(run.offset)});
                break;
        }
    });
    table.print(options.csv);
    stop_at(fault);
}

void check(const Options& options) {
    ImageReport report;
    stop_at(check_image(options.image, report));
    std::printf("%s in %s, %s bytes\n", counted(report.blocks, "block").c_str(),
                counted(report.files, "tape file").c_str(), grouped(report.block_bytes).c_str());
    std::printf("blocks of %d to %d bytes, %s\n", report.shortest_block, report.longest_block,
                counted(report.filemarks, "filemark").c_str());
    if (!report.ends_with_two_filemarks) std::printf("The two filemarks of an end are missing.\n");
    if (report.bad_blocks > 0) {
        throw CommandError(counted(report.bad_blocks, "block") + " with a recording error");
    }
    stop_at(report.fault);
    std::printf("The image is sound.\n");
}

void extract(const Options& options) {
    std::vector<std::string> made;
    std::int64_t bad_blocks = 0;
    stop_at(extract_image(options.image, options.folder, options.stem, options.extension, made,
                          bad_blocks));
    for (const std::string& file : made) std::printf("wrote %s\n", file.c_str());
    if (bad_blocks > 0) {
        throw CommandError(counted(bad_blocks, "block") +
                           " with a recording error; what could be read of them was written");
    }
}

}  // namespace

void add_image_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("image", "Tape images: make, list, check, extract");
    command->require_subcommand(1);
    command->footer(kExample);
    const auto options = std::make_shared<Options>();
    const auto add = [&](const char* name, const char* what, void (*work)(const Options&)) {
        CLI::App* sub = command->add_subcommand(name, what);
        sub->add_option("image", options->image, "The image")->required()->type_name("IMAGE");
        sub->callback([options, work] { work(*options); });
        return sub;
    };
    CLI::App* made = add("make", "Put SEG-D or SEG-Y files on an image, one tape file each", make);
    made->add_option("files", options->files, "Files to put on it")->required()->type_name("FILE");
    made->add_option("--kind", options->kind, "What the files are")
        ->check(CLI::IsMember({"auto", "segd", "segy"}))
        ->capture_default_str();
    made->add_flag("--force", options->replace, "Replace an image that exists");
    add("list", "Show blocks and filemarks", list)
        ->add_flag("--csv", options->csv, "Print the table as CSV");
    add("check", "Read an image to its end and report faults", check);
    CLI::App* extracted = add("extract", "Write each tape file to a disk file", extract);
    extracted->add_option("--into", options->folder, "Folder for the files")->capture_default_str();
    extracted->add_option("--stem", options->stem, "Their names begin so")->capture_default_str();
    extracted->add_option("--extension", options->extension, "Their names end so, as in .segd");
}

}  // namespace halvern
