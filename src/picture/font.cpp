#include "picture/font.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>

#include "foundation/words.h"

namespace halvern::picture {

namespace {

// Each character: its width, then its strokes, separated by ";". A stroke is joined points "x y"
// and arcs "a cx cy rx ry from to" (degrees, from the right, counter-clockwise). The baseline is at
// 0, capitals are 14 high, small letters 10; letters hang down to -4.
constexpr double kCapital = 14;
constexpr double kGap = 3.1;  // between characters

constexpr const char* kGlyphs[] = {
    "4",                                                                                  // blank
    "2 1 14 1 4.5; 1 0 1 0.4",                                                            // !
    "5 1 14 1 10; 4 14 4 10",                                                             // "
    "11 2.5 0 4.5 14; 6.5 0 8.5 14; 0.5 9.3 11 9.3; 0 4.7 10.5 4.7",                      // #
    "10 a 5 10.2 4.3 3.2 30 270 a 5 3.5 4.7 3.5 90 -150; 5 16 5 -2",                      // $
    "14 a 3 10.8 2.9 3.2 0 360; a 11 3.2 2.9 3.2 0 360; 12 14 2 0",                       // %
    "12 11.6 0 3.1 9.7 a 5.2 11.3 2.6 2.7 215 -35 2 6 a 4.3 3.6 4.1 3.6 132 310 11.2 7",  // &
    "2 1 14 1 10",                                                                        // '
    "4 a 6.5 5.5 5.5 10 125 235",                                                         // (
    "4 a -2.5 5.5 5.5 10 55 -55",                                                         // )
    "8 4 14 4 7; 1 12.2 7 8.8; 7 12.2 1 8.8",                                             // *
    "10 5 2 5 10; 1 6 9 6",                                                               // +
    "3 1.5 0.4 0.4 -2.8",                                                                 // ,
    "7 0.5 5.5 6.5 5.5",                                                                  // -
    "2 1 0 1 0.4",                                                                        // .
    "7 0 -1.5 7 15",                                                                      // /
    "9 a 4.5 7 4.5 7 0 360",                                                              // 0
    "9 1.5 11.3 5 14 5 0",                                                                // 1
    "9 a 4.5 9.8 4.2 4.2 165 -35 0.3 0 9 0",                                              // 2
    "9 a 4.5 10.6 3.8 3.4 150 -90 a 4.5 3.6 4.3 3.6 90 -150",                             // 3
    "9 6.6 0 6.6 14 0 4 9 4",                                                             // 4
    "9 8 14 1.4 14 0.9 7.7 a 4.3 4.6 4.5 4.6 135 -150",                                   // 5
    "9 a 4.5 4.4 4.4 4.4 0 360; a 8.6 4.4 8.5 9.6 180 100",                               // 6
    "9 0 14 9 14 3.2 0",                                                                  // 7
    "9 a 4.5 10.5 3.6 3.5 0 360; a 4.5 3.5 4.3 3.5 0 360",                                // 8
    "9 a 4.5 9.6 4.4 4.4 0 360; a 0.4 9.6 8.5 9.6 0 -80",                                 // 9
    "2 1 0 1 0.4; 1 8 1 8.4",                                                             // :
    "3 1.5 0.4 0.4 -2.8; 1.5 8 1.5 8.4",                                                  // ;
    "9 8 10.5 1 6 8 1.5",                                                                 // <
    "10 1 8 9 8; 1 4 9 4",                                                                // =
    "9 1 10.5 8 6 1 1.5",                                                                 // >
    "8 a 4 10.3 3.8 3.7 165 -60 4 5.6 4 4.2; 4 0 4 0.4",                                  // ?
    "14 a 6.8 6 3 3.4 0 360; 9.8 9.4 9.8 4.5 a 11.9 4.5 2.1 2 180 360 14 6 a 7 6 7 8 0 310",  // @
    "11 0 0 5.5 14 11 0; 2 5 9 5",                                                            // A
    "10 0 0 0 14 5.5 14 a 5.5 10.75 3.5 3.25 90 -90 0 7.5; 5.5 7.5 a 5.5 3.75 4 3.75 90 -90 0 0",
    "11 a 6 7 6 7 48 312",                                                 // C
    "11 0 0 0 14 4 14 a 4 7 7 7 90 -90 0 0",                               // D
    "9 8.6 14 0 14 0 0 8.6 0; 0 7.4 7.5 7.4",                              // E
    "9 8.6 14 0 14 0 0; 0 7.4 7.5 7.4",                                    // F
    "12 a 6 7 6 7 48 320 10.6 6.5 6.6 6.5",                                // G
    "10 0 0 0 14; 10 0 10 14; 0 7.4 10 7.4",                               // H
    "2 1 0 1 14",                                                          // I
    "7 7 14 7 4 a 3.5 4 3.5 4 0 -165",                                     // J
    "10 0 0 0 14; 9.5 14 0 5; 3.5 8.3 10 0",                               // K
    "8 0 14 0 0 8 0",                                                      // L
    "13 0 0 0 14 6.5 3 13 14 13 0",                                        // M
    "10 0 0 0 14 10 0 10 14",                                              // N
    "12 a 6 7 6 7 0 360",                                                  // O
    "10 0 0 0 14 5.5 14 a 5.5 10.25 4 3.75 90 -90 0 6.5",                  // P
    "12 a 6 7 6 7 0 360; 7.5 3.2 12 -1",                                   // Q
    "10 0 0 0 14 5.5 14 a 5.5 10.25 4 3.75 90 -90 0 6.5; 5 6.5 10 0",      // R
    "10 a 5 10.4 4.4 3.6 30 270 a 5 3.4 4.8 3.4 90 -150",                  // S
    "10 0 14 10 14; 5 14 5 0",                                             // T
    "10 0 14 0 5 a 5 5 5 5 180 360 10 14",                                 // U
    "11 0 14 5.5 0 11 14",                                                 // V
    "15 0 14 3.75 0 7.5 13 11.25 0 15 14",                                 // W
    "10 0 14 10 0; 10 14 0 0",                                             // X
    "10 0 14 5 7 10 14; 5 7 5 0",                                          // Y
    "9 0 14 9 14 0 0 9 0",                                                 // Z
    "4 4 15.5 0.8 15.5 0.8 -3 4 -3",                                       // [
    "7 0 15 7 -1.5",                                                       // backslash
    "4 0 15.5 3.2 15.5 3.2 -3 0 -3",                                       // ]
    "8 1 9.5 4 14 7 9.5",                                                  // ^
    "9 0 -2.5 9 -2.5",                                                     // _
    "4 0.5 14 3 11.5",                                                     // `
    "8.4 a 4.2 5 4.2 5 0 360; 8.4 10 8.4 0",                               // a
    "8.6 0 14 0 0; a 4.4 5 4.4 5 0 360",                                   // b
    "8 a 4.6 5 4.6 5 48 312",                                              // c
    "8.6 8.6 14 8.6 0; a 4.2 5 4.2 5 0 360",                               // d
    "8.8 0.1 5.3 8.7 5.3 a 4.4 5 4.4 5 4 318",                             // e
    "5.4 2 0 2 10.8 a 5.2 10.8 3.2 3.2 180 80; 0 9.6 5 9.6",               // f
    "8.6 a 4.2 5 4.2 5 0 360; 8.6 10 8.6 -0.2 a 4.4 -0.2 4.2 3.8 0 -150",  // g
    "8 0 0 0 14; 0 6 a 4 6 4 4 180 0 8 0",                                 // h
    "2 1 0 1 10; 1 13.6 1 14",                                             // i
    "4 3 10 3 -1.5 a 0.5 -1.5 2.5 2.5 0 -90; 3 13.6 3 14",                 // j
    "8 0 0 0 14; 7.5 10 0 3.6; 2.8 6 8 0",                                 // k
    "3 1 14 1 2.4 a 3.2 2.4 2.2 2.4 180 262",                              // l
    "13 0 0 0 10; 0 6.7 a 3.25 6.7 3.25 3.3 180 0 6.5 0; 6.5 6.7 a 9.75 6.7 3.25 3.3 180 0 13 0",
    "8 0 0 0 10; 0 6 a 4 6 4 4 180 0 8 0",                                          // n
    "8.8 a 4.4 5 4.4 5 0 360",                                                      // o
    "8.6 0 10 0 -4; a 4.4 5 4.4 5 0 360",                                           // p
    "8.6 8.6 10 8.6 -4; a 4.2 5 4.2 5 0 360",                                       // q
    "5 0 0 0 10; 0 6.2 a 4.2 6.2 4.2 3.8 180 80",                                   // r
    "7.6 a 3.9 7.45 3.3 2.55 30 270 a 3.9 2.45 3.7 2.45 90 -150",                   // s
    "5.4 2.2 13 2.2 3 a 5 3 2.8 3 180 280; 0 9.8 5.2 9.8",                          // t
    "8 0 10 0 4 a 4 4 4 4 180 360 8 10; 8 4 8 0",                                   // u
    "9 0 10 4.5 0 9 10",                                                            // v
    "13 0 10 3.25 0 6.5 9 9.75 0 13 10",                                            // w
    "8 0 10 8 0; 8 10 0 0",                                                         // x
    "9 0 10 4.5 0; 9 10 3.4 -2.6 2.2 -4 0.6 -4",                                    // y
    "7.6 0 10 7.6 10 0 0 7.6 0",                                                    // z
    "5 4.5 15.5 3.2 15.2 2.2 13.8 2.2 8 0.6 6.2 2.2 4.4 2.2 -1.4 3.2 -2.8 4.5 -3",  // {
    "2 1 15.5 1 -3",                                                                // |
    "5 0.5 15.5 1.8 15.2 2.8 13.8 2.8 8 4.4 6.2 2.8 4.4 2.8 -1.4 1.8 -2.8 0.5 -3",  // }
    "10 1 4.8 2.2 6.6 3.8 6.8 6.2 5.2 7.8 5.4 9 7.2",                               // ~
};
static_assert(std::size(kGlyphs) == '~' - ' ' + 1);

/// A letter of two strings: its strokes, and those of a mark, which are about the middle of the
/// letter and above its height, or below the baseline.
struct Glyph {
    const char* letter;
    const char* mark = nullptr;
    double mark_height = 0;
    double width() const { return std::strtod(letter, nullptr); }
};

// From U+00C0 on: a letter and the sign that its mark looks like, or the strokes of a letter that
// is not made of two.
constexpr const char* kLatin[] = {
    "A`",
    "A'",
    "A^",
    "A~",
    "A:",
    "Ao",
    "16 0 0 7.5 14 15.5 14; 8.5 14 8.5 0 15.5 0; 8.5 7.4 14.5 7.4; 3 5 8.5 5",  // AE
    "C,",
    "E`",
    "E'",
    "E^",
    "E:",
    "I`",
    "I'",
    "I^",
    "I:",
    "12 1.5 0 1.5 14 5 14 a 5 7 6.5 7 90 -90 1.5 0; 0 7.4 5.5 7.4",  // Eth
    "N~",
    "O`",
    "O'",
    "O^",
    "O~",
    "O:",
    "10 1.5 2.5 8.5 9.5; 1.5 9.5 8.5 2.5",  // times
    "12 a 6 7 6 7 0 360; 1 -0.5 11 14.5",   // O with a stroke
    "U`",
    "U'",
    "U^",
    "U:",
    "Y'",
    "10 0 0 0 14; 0 11 5 11 a 5 7.25 4 3.75 90 -90 0 3.5",                         // Thorn
    "9 0 0 0 10.5 a 3.8 10.5 3.8 3.5 180 -90 4.5 7 a 4.5 3.5 4 3.5 90 -90 2.5 0",  // sharp s
    "a`",
    "a'",
    "a^",
    "a~",
    "a:",
    "ao",
    "15.4 a 4.2 5 4.2 5 0 360; 6.7 5.3 15.3 5.3 a 11 5 4.4 5 4 318",  // ae
    "c,",
    "e`",
    "e'",
    "e^",
    "e:",
    "i`",
    "i'",
    "i^",
    "i:",
    "9 a 4.4 4.6 4.4 4.6 0 360; 8.7 5 2 14; 1.5 10.5 7 13.5",  // eth
    "n~",
    "o`",
    "o'",
    "o^",
    "o~",
    "o:",
    "10 1 6 9 6; 5 10 5 10.4; 5 1.6 5 2",          // divided by
    "8.8 a 4.4 5 4.4 5 0 360; 0.6 -0.5 8.2 10.5",  // o with a stroke
    "u`",
    "u'",
    "u^",
    "u:",
    "y'",
    "8.6 0 14 0 -4; a 4.4 5 4.4 5 0 360",  // thorn
    "y:",
};
static_assert(std::size(kLatin) == 0xFF - 0xC0 + 1);

constexpr const char* kBox = "9 0 0 0 14 9 14 9 0 0 0";
constexpr const char* kDotless = "2 1 0 1 10";

const char* mark_of(char sign) {
    switch (sign) {
        case '`':
            return "0 -2 4.6 0.8 1.8";
        case '\'':
            return "0 2 4.6 -0.8 1.8";
        case '^':
            return "0 -3 1.8 0 4.6 3 1.8";
        case '~':
            return "0 -3.6 2 -2.2 3.4 -0.8 3.2 0.8 2.4 2.2 2.2 3.6 3.6";
        case ':':
            return "0 -2.4 2.6 -2.4 3; 2.4 2.6 2.4 3";
        case 'o':
            return "0 a 0 3 1.9 1.9 0 360";
        default:  // a cedilla
            return "0 0.2 0 -0.3 -1.4 1.2 -2 1 -3.4 -1.2 -3.7";
    }
}

/// Printable ASCII, Latin-1's letters, and a few signs; a box for any other character.
Glyph glyph_of(char32_t character) {
    if (character >= ' ' && character <= '~') return {kGlyphs[character - ' ']};
    if (character >= 0xC0 && character <= 0xFF) {
        const char* entry = kLatin[character - 0xC0];
        if (entry[2] != '\0') return {entry};
        const char letter = entry[0], sign = entry[1];
        constexpr double kSmall = 10;
        const double height = sign == ',' ? 0 : letter >= 'a' ? kSmall : kCapital;
        return {letter == 'i' ? kDotless : kGlyphs[letter - ' '], mark_of(sign), height};
    }
    switch (character) {
        case 0xA0:  // no break
            return {kGlyphs[0]};
        case 0xB0:  // degrees
            return {"5 a 2.5 11.5 2.5 2.5 0 360"};
        case 0xB1:  // plus or minus
            return {"10 5 4 5 12; 1 8 9 8; 1 1 9 1"};
        case 0xB2:  // squared
            return {"6 a 3 11.6 2.6 2.4 165 -35 0.3 6 6 6"};
        case 0xB5:  // micro
            return {"8 0 10 0 -4; 0 4 a 4 4 4 4 180 360 8 10; 8 4 8 0"};
        case 0xB7:  // middle dot
            return {"2 1 5 1 5.4"};
        case 0x2013:
        case 0x2014:  // dashes
            return {"11 0.5 5.5 10.5 5.5"};
        case 0x2019:  // apostrophe
            return {kGlyphs['\'' - ' ']};
        default:
            return {kBox};
    }
}

/// Appends the strokes of a character; its coordinates go through `place`.
template <class Place>
void append_strokes(const char* glyph, std::vector<Polyline>& strokes, Place&& place) {
    constexpr double kStep = 15;  // degrees between points of an arc
    char* rest = nullptr;
    std::strtod(glyph, &rest);  // the width
    const auto number = [&] { return std::strtod(rest, &rest); };
    const auto next = [&] {
        while (*rest == ' ') ++rest;
        return *rest;
    };
    strokes.emplace_back();
    for (char c = next(); c != '\0'; c = next()) {
        if (c == ';') {
            ++rest;
            strokes.emplace_back();
        } else if (c == 'a') {
            ++rest;
            const double cx = number(), cy = number(), rx = number(), ry = number();
            const double from = number(), to = number();
            const int steps = static_cast<int>(std::ceil(std::fabs(to - from) / kStep));
            for (int i = 0; i <= steps; ++i) {
                const double angle = (from + (to - from) * i / steps) * std::numbers::pi / 180;
                strokes.back().push_back(
                    place(cx + rx * std::cos(angle), cy + ry * std::sin(angle)));
            }
        } else {
            const double x = number(), y = number();
            strokes.back().push_back(place(x, y));
        }
    }
    if (strokes.back().empty()) strokes.pop_back();
}

}  // namespace

double text_width(std::string_view text, double size) {
    if (text.empty()) return 0;
    double width = -kGap;
    while (!text.empty()) width += glyph_of(next_character(text)).width() + kGap;
    return width * size / kCapital;
}

std::string fitted(std::string_view text, double size, double width) {
    if (text_width(text, size) <= width) return std::string(text);
    constexpr std::string_view kMore = "...";
    std::string_view rest = text;
    std::string part;
    while (true) {
        next_character(rest);
        const std::string_view longer = text.substr(0, text.size() - rest.size());
        std::string next = std::string(longer).append(kMore);
        if (rest.empty() || text_width(next, size) > width) return part;
        part = std::move(next);
    }
}

void draw_text(Canvas& canvas, Point at, std::string_view text, const TextStyle& style) {
    const double scale = style.size / kCapital;
    const double width = text_width(text, style.size);
    const double before = style.anchor == Anchor::kStart    ? 0
                          : style.anchor == Anchor::kMiddle ? width / 2
                                                            : width;
    // Stems and baselines are on whole pixels, where they are sharpest.
    Point origin = style.upward ? Point{at.x, at.y + before} : Point{at.x - before, at.y};
    origin = {std::floor(origin.x) + 0.5, std::floor(origin.y) + 0.5};
    std::vector<Polyline> strokes;
    double pen = 0;
    const auto place = [&](double x, double y) {
        const double along = (pen + x) * scale, above = y * scale;
        return style.upward ? Point{origin.x - above, origin.y - along}
                            : Point{origin.x + along, origin.y - above};
    };
    while (!text.empty()) {
        const Glyph glyph = glyph_of(next_character(text));
        append_strokes(glyph.letter, strokes, place);
        if (glyph.mark) {
            append_strokes(glyph.mark, strokes, [&](double x, double y) {
                return place(glyph.width() / 2 + x, glyph.mark_height + y);
            });
        }
        pen += glyph.width() + kGap;
    }
    const double weight = std::max(1.0, style.size * 0.125) * (style.bold ? 1.45 : 1);
    canvas.stroke(strokes, weight, style.colour);
}

}  // namespace halvern::picture
