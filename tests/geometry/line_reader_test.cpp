#include "geometry/line_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace halvern {
namespace {

using Lines = std::vector<std::pair<std::int64_t, std::string>>;  // number and text

Lines all_lines(LineReader& reader) {
    Lines lines;
    std::string_view line;
    while (reader.next(line)) lines.emplace_back(reader.line_number(), line);
    return lines;
}

TEST(LineReader, TakesEveryLineEnd) {
    const std::pair<const char*, Lines> kTexts[] = {
        {"", {}},
        {"a\nb\r\nc\rd", {{1, "a"}, {2, "b"}, {3, "c"}, {4, "d"}}},
        {"a\n\nb\r\r", {{1, "a"}, {2, ""}, {3, "b"}, {4, ""}}},
        {"\r\n\n", {{1, ""}, {2, ""}}},
        {"a\n", {{1, "a"}}}};
    for (const auto& [text, lines] : kTexts) {
        LineReader reader = LineReader::Over(text, 198);
        EXPECT_EQ(all_lines(reader), lines) << text;
    }
}

TEST(LineReader, CutsLongLinesIntoPiecesOfOneNumber) {
    constexpr std::string_view kText = "123456789\r\n1234\n12345678\nab";
    LineReader reader = LineReader::Over(kText, 4);
    const Lines pieces = {{1, "1234"}, {1, "5678"}, {1, "9"}, {2, "1234"}, {2, ""},
                          {3, "1234"}, {3, "5678"}, {3, ""},  {4, "ab"}};
    EXPECT_EQ(all_lines(reader), pieces);
    EXPECT_EQ(LineReader::Over(kText, 4).count_lines(), 9);
}

// Three files whose line ends fall on every place around the ends of the blocks they are read in.
TEST(LineReader, BlocksLeaveNoTrace) {
    const testing_support::TemporaryFolder folder;
    for (const std::size_t first_line : {0u, 1u, 2u}) {
        Lines lines = {{1, std::string(first_line, 'f')}};
        std::string bytes = lines[0].second + "\r\n";
        for (int i = 2; bytes.size() < (std::size_t{5} << 19); ++i) {
            lines.emplace_back(i, std::to_string(i) + "-" + std::string(i % 3 ? 150 : 197, 'x'));
            lines.back().second.resize(std::min<std::size_t>(lines.back().second.size(), 197));
            bytes += lines.back().second + "\r\n";
        }
        LineReader reader(folder.write("lines", bytes), 198);
        EXPECT_TRUE(all_lines(reader) == lines) << "first line of " << first_line;
        EXPECT_EQ(reader.position(), static_cast<std::int64_t>(bytes.size()));
    }
}

TEST(LineReader, SaysWhenThereIsNothingToRead) {
    const testing_support::TemporaryFolder folder;
    EXPECT_FALSE(LineReader(folder.file("absent"), 198).opened());
    EXPECT_FALSE(LineReader(folder.path().string(), 198).opened());
}

}  // namespace
}  // namespace halvern
