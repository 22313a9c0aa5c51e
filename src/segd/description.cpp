#include "segd/description.h"

#include <algorithm>
#include <bit>
#include <charconv>

#include "platform/text_file.h"
#include "segd/trace_header.h"

namespace halvern::segd {

namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kGroupNames[kGroups] = {"G1",  "G2",  "GN",  "CS",  "TH",  "TE1", "TE2",
                                                   "TE3", "TE4", "TE5", "TE6", "TE7", "EXT", "XTN"};
constexpr std::size_t kLongestHeader = 65535 * kBlockBytes;  // extended and external blocks

std::string_view next_token(std::string_view& text) {
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    const std::string_view token = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return token;
}

std::optional<int> number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return {};
    return value;
}

std::size_t longest(Group group) {
    if (group == Group::kTH) return TraceHeader::kSize;
    return group == Group::kExt || group == Group::kXtn ? kLongestHeader : kBlockBytes;
}

struct TypeName {
    std::string_view name;
    Transcription::Type type;
    int size;
};
constexpr TypeName kTypes[] = {
    {"U1", Transcription::Type::kUnsigned, 1},  {"U2", Transcription::Type::kUnsigned, 2},
    {"U3", Transcription::Type::kUnsigned, 3},  {"U4", Transcription::Type::kUnsigned, 4},
    {"I2", Transcription::Type::kSigned, 2},    {"I4", Transcription::Type::kSigned, 4},
    {"R4", Transcription::Type::kFloat, 4},     {"BCD2", Transcription::Type::kDecimal, 2},
    {"BCD3", Transcription::Type::kDecimal, 3}, {"BCD4", Transcription::Type::kDecimal, 4},
    {"BCD5", Transcription::Type::kDecimal, 5}, {"BCD6", Transcription::Type::kDecimal, 6},
    {"BCD7", Transcription::Type::kDecimal, 7}, {"BCD8", Transcription::Type::kDecimal, 8},
};

std::size_t bytes_of(const Transcription& entry) {
    const auto size = static_cast<std::size_t>(entry.size);
    return entry.type == Transcription::Type::kDecimal ? (size + 1) / 2 : size;
}

std::string_view trimmed(std::string_view line) {
    line = line.substr(0, line.find('#'));
    const std::size_t begin = std::min(line.find_first_not_of(kBlanks), line.size());
    line.remove_prefix(begin);
    return line.substr(0, line.find_last_not_of(kBlanks) + 1);
}

}  // namespace

std::optional<Transcription> Transcription::parse(std::string_view line) {
    std::string_view rest = line;
    Transcription entry;
    entry.word = next_token(rest);
    const auto group = std::ranges::find(kGroupNames, next_token(rest));
    const std::optional<int> byte = number(next_token(rest));
    const auto type = std::ranges::find(kTypes, next_token(rest), &TypeName::name);
    if (group == std::end(kGroupNames) || !byte || *byte < 1 || type == std::end(kTypes) ||
        !next_token(rest).empty()) {
        return {};
    }
    entry.group = static_cast<Group>(group - std::begin(kGroupNames));
    entry.offset = static_cast<std::size_t>(*byte - 1);
    entry.type = type->type;
    entry.size = type->size;
    if (entry.offset + bytes_of(entry) > longest(entry.group)) return {};
    return entry;
}

std::optional<double> Transcription::value(const GroupBytes& groups) const {
    const std::span<const std::byte> group_bytes = groups[static_cast<std::size_t>(group)];
    const std::size_t count = bytes_of(*this);
    if (group_bytes.size() < offset + count) return {};
    const std::span<const std::byte> bytes = group_bytes.subspan(offset, count);
    std::uint32_t binary = 0;
    double decimal = 0;
    for (std::size_t i = 0; i < count; ++i) {
        binary = binary << 8 | std::to_integer<std::uint32_t>(bytes[i]);
        const bool half = i == 0 && size % 2 == 1;
        const int high = half ? 0 : high_nibble(bytes[i]);
        const int low = low_nibble(bytes[i]);
        if (type == Type::kDecimal && (high > 9 || low > 9)) return {};
        decimal = decimal * 100 + high * 10 + low;
    }
    switch (type) {
        case Type::kUnsigned:
            return binary;
        case Type::kSigned:
            return size == 2 ? static_cast<std::int16_t>(binary)
                             : static_cast<std::int32_t>(binary);
        case Type::kFloat:
            return std::bit_cast<float>(binary);
        case Type::kDecimal:
            break;
    }
    return decimal;
}

Description Description::read(const std::string& path, const TraceHeaderDefinition& definition) {
    Description description;
    const Result<std::string> file = read_text_file(path);
    description.found = static_cast<bool>(file);
    std::string_view rest = file ? std::string_view(*file) : std::string_view();
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string text(trimmed(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (text.empty()) continue;
        std::optional<Transcription> entry = Transcription::parse(text);
        if (!entry) {
            description.problems.push_back("Invalid SEGD transcription code: '" + text + "'\n");
            continue;
        }
        entry->word_index = definition.find(entry->word);
        if (entry->word_index < 0) {
            description.problems.push_back(
                "Invalid SEGD transcription code (SEGY header word invalid): '" + text + "'\n");
            continue;
        }
        description.entries.push_back(*entry);
    }
    return description;
}

void Description::apply(const GroupBytes& groups, TraceHeaderDefinition& definition) const {
    for (const Transcription& entry : entries) {
        const std::optional<double> value = entry.value(groups);
        if (value) definition.set_double(entry.word_index, *value);
    }
}

}  // namespace halvern::segd
