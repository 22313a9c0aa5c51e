#include "foundation/words.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

TEST(Words, GroupNumbersByThousands) {
    const std::pair<long long, const char*> kNumbers[] = {
        {0, "0"}, {999, "999"}, {1000, "1,000"}, {-12345, "-12,345"}, {1234567, "1,234,567"}};
    for (const auto& [number, text] : kNumbers) EXPECT_EQ(grouped(number), text);
}

// The bytes of UTF-8 are from RFC 3629: what is too long, a half of a pair or too large is none.
TEST(Words, PrintableTextSteersNoTerminal) {
    const std::pair<std::string_view, const char*> kTexts[] = {
        {"plain, caf\u00e9, \u6c34, \U0001F30D\nnext",
         "plain, caf\u00e9, \u6c34, \U0001F30D\nnext"},
        {"\033[31mred\007\r\x7f", "?[31mred???"},
        {"a\tb", "a b"},
        {"\xC2\x9B"
         "31m",
         "?31m"},  // the one character that starts a control sequence
        {"\x9B"
         "31m",
         "?31m"},                      // the same in an 8-bit code
        {"Z\xFCrich", "Z?rich"},       // Latin-1
        {"\xC0\xAF", "??"},            // "/" in two bytes
        {"\xED\xA0\x80", "???"},       // U+D800
        {"\xF4\x90\x80\x80", "????"},  // U+110000
        {"\xE6\xB0", "??"},            // cut
    };
    for (const auto& [text, shown] : kTexts) EXPECT_EQ(printable(text), shown);
}

}  // namespace
}  // namespace halvern
