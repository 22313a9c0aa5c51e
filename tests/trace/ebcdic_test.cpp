#include "trace/ebcdic.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace halvern {
namespace {

// Codes of the POSIX table, with the characters on which EBCDIC tables differ.
TEST(Ebcdic, KnownCharacters) {
    const std::pair<char, int> kCodes[] = {
        {' ', 0x40}, {'C', 0xC3}, {'a', 0x81}, {'0', 0xF0}, {'9', 0xF9}, {'\n', 0x25}, {'!', 0x5A},
        {'[', 0xAD}, {']', 0xBD}, {'|', 0x4F}, {'^', 0x9A}, {'~', 0x5F}, {'{', 0xC0},  {'\\', 0xE0},
    };
    for (const auto& [character, code] : kCodes) {
        const auto ascii = static_cast<std::byte>(character);
        EXPECT_EQ(std::to_integer<int>(ascii_to_ebcdic(ascii)), code) << character;
        EXPECT_EQ(ebcdic_to_ascii(static_cast<std::byte>(code)), ascii) << character;
    }
}

TEST(Ebcdic, EveryCodeAsDdConvertsIt) {
    testing_support::TemporaryFolder folder;
    std::string codes;
    for (int code = 0; code < 256; ++code) codes += static_cast<char>(code);
    const std::string in = folder.write("in", codes);
    for (const std::string conversion : {"ebcdic", "ascii"}) {
        const std::string out = folder.file(conversion);
        const std::string command = "dd if=" + in + " of=" + out + " conv=" + conversion;
        if (std::system((command + " 2>" + folder.file("log")).c_str()) != 0) {
            GTEST_SKIP() << "no dd here";
        }
        const std::string expected = testing_support::file_bytes(out);
        ASSERT_EQ(expected.size(), codes.size());
        for (std::size_t i = 0; i < codes.size(); ++i) {
            const auto code = static_cast<std::byte>(i);
            EXPECT_EQ(conversion == "ebcdic" ? ascii_to_ebcdic(code) : ebcdic_to_ascii(code),
                      static_cast<std::byte>(expected[i]))
                << conversion << " of code " << i;
        }
    }
}

TEST(Ebcdic, ConvertsInPlace) {
    std::vector<std::byte> text = {std::byte{'H'}, std::byte{'i'}};
    ascii_to_ebcdic(text, text);
    EXPECT_EQ(text, (std::vector<std::byte>{std::byte{0xC8}, std::byte{0x89}}));
}

}  // namespace
}  // namespace halvern
