#include "trace/ebcdic.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace halvern {
namespace {

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
