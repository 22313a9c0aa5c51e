#include "trace/header_definition.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <span>

#include "foundation/messages.h"
#include "platform/replace_file.h"
#include "platform/text_file.h"
#include "trace/big_endian.h"

namespace halvern {

namespace {

// Columns of a word's line, counted from 0; location and type follow in free format.
constexpr std::size_t kDescriptionLength = 50;
constexpr std::size_t kNameColumn = 51;
constexpr std::size_t kNameLength = 8;
constexpr std::size_t kNumbersColumn = 60;

// A longer line, its end counted, is read in pieces, each taken as a line of its own.
constexpr std::size_t kLongestLine = 198;

// More than any header image can use; a file of many more lines is no description.
constexpr std::size_t kMostWords = 100'000;

// Where a line that is too short to say it puts its word: outside the image, so that it reads as 0
// and never overwrites another word.
constexpr int kNoLocation = -1;

constexpr const char* kNoCategory = "No Category";

int held_in_int(double value) {
    if (std::isnan(value)) return 0;
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, kLowest, kHighest));
}

/// Takes white space and a decimal integer from the front of `text`, held within 32 bits. False,
/// with `value` untouched, when there is none.
bool take_int(std::string_view& text, int& value) {
    const std::size_t start = text.find_first_not_of(" \t\v\f\r");
    if (start == std::string_view::npos) return false;
    text.remove_prefix(start);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || text[0] < '0' || text[0] > '9') return false;
    double number = 0;  // holds every 32-bit integer exactly, and whatever is larger well enough
    while (!text.empty() && text[0] >= '0' && text[0] <= '9') {
        number = number * 10 + (text[0] - '0');
        text.remove_prefix(1);
    }
    value = held_in_int(negative ? -number : number);
    return true;
}

HeaderWord parse_word(std::string_view line, int category) {
    const auto columns = [line](std::size_t first, std::size_t length) {
        return first < line.size() ? line.substr(first, length) : std::string_view{};
    };
    HeaderWord word{.location = kNoLocation, .category = category};
    const std::string_view name = columns(kNameColumn, kNameLength);
    word.name = name.substr(0, name.find(' '));
    word.description = columns(0, kDescriptionLength);
    word.description.resize(kDescriptionLength, ' ');
    std::string_view numbers = columns(kNumbersColumn, std::string_view::npos);
    if (take_int(numbers, word.location)) take_int(numbers, word.type);
    return word;
}

std::string_view without_line_end(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

/// The N bytes of `word` in `image`, or null when there are none.
template <std::size_t N>
std::byte* field_of(const HeaderWord& word, std::byte* image) {
    constexpr int kLast = kTraceHeaderBytes - static_cast<int>(N);
    if (!image || word.location < 0 || word.location > kLast) return nullptr;
    return image + word.location;
}

template <std::size_t N>
Bytes<N> bytes_at(const std::byte* field) {
    return Bytes<N>(field, N);
}

}  // namespace

int TraceHeaderDefinition::load(const std::string& path) {
    words_.clear();
    categories_.clear();
    loaded_ = false;

    const Result<std::string> file = read_text_file(path);
    if (!file) {
        LogPrint("Cannot Open Trace Header Description File '%s'\n", path.c_str());
        return -1;
    }

    categories_.emplace_back(kNoCategory);
    std::string_view rest = *file;
    while (!rest.empty() && words_.size() < kMostWords) {
        const std::size_t line = std::min({rest.find('\n'), rest.size() - 1, kLongestLine - 1}) + 1;
        const std::string_view text = without_line_end(rest.substr(0, line));
        rest.remove_prefix(line);
        if (text.starts_with('!')) {
            if (categories_.size() < kMostWords) categories_.emplace_back(text.substr(1));
        } else {
            words_.push_back(parse_word(text, static_cast<int>(categories_.size()) - 1));
        }
    }
    loaded_ = true;
    return 0;
}

int TraceHeaderDefinition::save(const std::string& path) const {
    if (!loaded_) return -1;

    const auto name_of = [this](std::size_t category) {
        return '!' + categories_[category] + '\n';
    };
    int current = words_.empty() ? 0 : words_.front().category;
    auto category = static_cast<std::size_t>(current);
    std::string text = name_of(category);
    for (const HeaderWord& word : words_) {
        if (word.category != current) {
            // The next in order: categories are contiguous and ascending.
            category = std::min(category + 1, categories_.size() - 1);
            current = word.category;
            text += name_of(category);
        }
        char rest[64];  // the longest: 8 characters and twice 11 digits
        std::snprintf(rest, sizeof rest, " %-8s %3d %1d\n", word.name.c_str(), word.location,
                      word.type);
        text += word.description + rest;
    }
    return replace_file(path, text, Reach::kSystem) ? -1 : 0;
}

int TraceHeaderDefinition::find(std::string_view name) const {
    if (!loaded_) return -1;
    const auto word = std::ranges::find(words_, name, &HeaderWord::name);
    return word == words_.end() ? -1 : static_cast<int>(word - words_.begin());
}

const HeaderWord* TraceHeaderDefinition::word(int index) const {
    return index >= 0 && index < count() ? &words_[static_cast<std::size_t>(index)] : nullptr;
}

const char* TraceHeaderDefinition::name(int index) const {
    const HeaderWord* w = word(index);
    return w ? w->name.c_str() : nullptr;
}

const char* TraceHeaderDefinition::description(int index) const {
    const HeaderWord* w = word(index);
    return w ? w->description.c_str() : nullptr;
}

const char* TraceHeaderDefinition::category(int index) const {
    const HeaderWord* w = word(index);
    return w ? categories_[static_cast<std::size_t>(w->category)].c_str() : nullptr;
}

int TraceHeaderDefinition::type(int index) const {
    const HeaderWord* w = word(index);
    return w ? w->type : static_cast<int>(HeaderType::kI4);
}

int TraceHeaderDefinition::location(int index) const {
    const HeaderWord* w = word(index);
    return w ? w->location : 0;
}

double TraceHeaderDefinition::get_double(int index) const {
    const HeaderWord* w = word(index);
    if (w && static_cast<HeaderType>(w->type) == HeaderType::kR4) {
        const std::byte* field = field_of<4>(*w, image_);
        return field ? get_f32(bytes_at<4>(field)) : 0.0;
    }
    return get_int(index);
}

int TraceHeaderDefinition::get_int(int index) const {
    const HeaderWord* w = word(index);
    if (!w) return 0;
    switch (static_cast<HeaderType>(w->type)) {
        case HeaderType::kR4: {
            const std::byte* field = field_of<4>(*w, image_);
            return field ? held_in_int(get_f32(bytes_at<4>(field))) : 0;
        }
        case HeaderType::kI4: {
            const std::byte* field = field_of<4>(*w, image_);
            return field ? get_i32(bytes_at<4>(field)) : 0;
        }
        default: {
            const std::byte* field = field_of<2>(*w, image_);
            return field ? get_i16(bytes_at<2>(field)) : 0;
        }
    }
}

void TraceHeaderDefinition::set_double(int index, double value) {
    const HeaderWord* w = word(index);
    if (!w) return;
    switch (static_cast<HeaderType>(w->type)) {
        case HeaderType::kR4:
            if (std::byte* field = field_of<4>(*w, image_)) {
                put_f32(MutableBytes<4>(field, 4), static_cast<float>(value));
            }
            break;
        case HeaderType::kI4:
            if (std::byte* field = field_of<4>(*w, image_)) {
                put_i32(MutableBytes<4>(field, 4), held_in_int(value));
            }
            break;
        default:
            if (std::byte* field = field_of<2>(*w, image_)) {
                put_i16(MutableBytes<2>(field, 2), held_in_int(value));
            }
    }
}

bool TraceHeaderDefinition::store(int index, double value) {
    const HeaderWord* w = word(index);
    if (!w || !std::isfinite(value)) return false;
    const auto fits = [value](double low, double high) { return value >= low && value <= high; };
    if (static_cast<HeaderType>(w->type) == HeaderType::kR4) {
        if (!fits(-double{std::numeric_limits<float>::max()}, std::numeric_limits<float>::max())) {
            return false;
        }
    } else {
        value = std::round(value);
        const bool wide = static_cast<HeaderType>(w->type) == HeaderType::kI4;
        if (!(wide ? fits(INT32_MIN, INT32_MAX) : fits(INT16_MIN, INT16_MAX))) return false;
    }
    set_double(index, value);
    return true;
}

}  // namespace halvern
