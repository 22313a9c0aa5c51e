#include "tape/image_tools.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temporary_folder.h"
#include "tape/image_bytes.h"

namespace halvern {
namespace {

using namespace testing_support;

TEST(ImageTools, ListEqualThingsAsRuns) {
    const TemporaryFolder folder;
    const std::string image = folder.write(
        "tape.tap", block("head") + block("ab") + block("cd") + filemark() + block("ef") +
                        block("gh", 0x80000000) + filemark() + filemark());
    std::string listing;
    EXPECT_EQ(list_image(image,
                         [&](const ImageRun& run) {
                             listing += std::to_string(run.offset) + ":" +
                                        std::to_string(static_cast<int>(run.item)) + " file " +
                                        std::to_string(run.file) + " from " +
                                        std::to_string(run.first_block) + " " +
                                        std::to_string(run.count) + "x" +
                                        std::to_string(run.length) + "\n";
                         }),
              "");
    EXPECT_EQ(listing,  // items: 0 block, 1 bad block, 2 filemark, 3 end of data
              "0:0 file 1 from 1 1x4\n12:0 file 1 from 2 2x2\n32:2 file 1 from 0 1x0\n"
              "36:0 file 2 from 1 1x2\n46:1 file 2 from 2 1x2\n56:2 file 2 from 0 1x0\n"
              "60:2 file 3 from 0 1x0\n64:3 file 4 from 0 1x0\n");
}

TEST(ImageTools, CheckCountsAndFindsFaults) {
    const TemporaryFolder folder;
    ImageReport report;
    const std::string sound = block("abcd") + block("ab") + filemark() + filemark();
    ASSERT_EQ(check_image(folder.write("sound.tap", sound), report), "");
    EXPECT_TRUE(report.sound() && report.ends_with_two_filemarks);
    EXPECT_EQ(report.blocks, 2);
    EXPECT_EQ(report.block_bytes, 6);
    EXPECT_EQ(report.files, 1);
    EXPECT_EQ(report.shortest_block, 2);
    EXPECT_EQ(report.longest_block, 4);
    ASSERT_EQ(check_image(folder.write("cut.tap", sound.substr(0, 15)), report), "");
    EXPECT_FALSE(report.sound());
    EXPECT_EQ(report.fault, "the record at byte 12 is cut short");
    EXPECT_EQ(list_image(folder.file("cut.tap"), [](const ImageRun&) {}),
              "'" + folder.file("cut.tap") + "' is damaged: the record at byte 12 is cut short");
    EXPECT_NE(check_image(folder.file("none.tap"), report), "");
}

// A SEG-Y file of two traces of 3 samples: 16-bit (format 3) in records of 246 bytes.
std::string small_segy() {
    std::string file(3600, ' ');
    file.replace(3200, 400, std::string(400, '\0'));
    file[3221] = 3;  // samples
    file[3225] = 3;  // format
    return file + std::string(246, 'a') + std::string(246, 'b');
}

TEST(ImageTools, SegyGoesIntoAnImageAndComesBackTheSame) {
    const TemporaryFolder folder;
    const std::string file = folder.write("line.sgy", small_segy());
    const std::string image = folder.file("line.tap");
    const std::string files[] = {file, file};
    ASSERT_EQ(make_image(files, image, false, split_segy), "");
    const std::string tape_file =
        block(small_segy().substr(0, 3200)) + block(small_segy().substr(3200, 400)) +
        block(std::string(246, 'a')) + block(std::string(246, 'b')) + filemark();
    EXPECT_EQ(file_bytes(image), tape_file + tape_file + filemark());

    std::vector<std::string> made;
    std::int64_t bad_blocks = 0;
    ASSERT_EQ(extract_image(image, folder.path().string(), "back", ".sgy", made, bad_blocks), "");
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[1], folder.file("back0002.sgy"));
    EXPECT_EQ(file_bytes(made[1]), small_segy());
    EXPECT_EQ(bad_blocks, 0);
    EXPECT_NE(extract_image(image, folder.path().string(), "back", ".sgy", made, bad_blocks), "")
        << "files that are there are replaced";
}

TEST(ImageTools, WhatCannotBeMadeLeavesNothingBehind) {
    const TemporaryFolder folder;
    const std::string good = folder.write("line.sgy", small_segy());
    const std::string cut = folder.write("cut.sgy", small_segy().substr(0, 4000));
    const std::string image = folder.file("line.tap");
    const std::string both[] = {good, cut};
    EXPECT_EQ(make_image(both, image, false, split_segy),
              "'" + cut + "' does not hold whole traces of 246 bytes");
    const std::string there = folder.write("there.tap", "data");
    EXPECT_NE(make_image(std::span(both, 1), there, false, split_segy), "");
    EXPECT_NE(make_image(both, there, true, split_segy), "");
    const auto files = std::filesystem::directory_iterator(folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 3);
    EXPECT_NE(make_image(std::span(both, 1), good, true, split_segy), "") << "made from itself";
    EXPECT_EQ(file_bytes(there), "data");
    EXPECT_EQ(file_bytes(good), small_segy());
    EXPECT_EQ(make_image(std::span(both, 1), there, true, split_segy), "");
    EXPECT_EQ(file_bytes(there).size(), 3208u + 408 + 2 * 254 + 8);

    const std::string damaged = folder.write("damaged.tap", block("ab") + word(99));
    std::vector<std::string> made;
    std::int64_t bad_blocks = 0;
    EXPECT_NE(extract_image(damaged, folder.path().string(), "part", ".x", made, bad_blocks), "");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "part0001.x"));
}

}  // namespace
}  // namespace halvern
