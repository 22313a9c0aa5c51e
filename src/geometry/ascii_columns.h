#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "flow/flow_item.h"
#include "geometry/ascii_field.h"
#include "geometry/line_reader.h"

namespace halvern {

/// What the ASCII items are told: a text file, and the header words that its columns go to. Steps
/// that can fail say why with an error of the item.
struct AsciiColumns {
    enum Method { kOverwrite = 0, kUpdate = 1, kCreate = 2 };
    /// Lines are read as far as this, their end counted; what is longer goes on as a line of its
    /// own.
    static constexpr std::size_t kLongestLine = 998;

    static constexpr const char* kOverwriteLine = "Method          = OVERWRITE EXISTING HEADERS\n";

    int method{};
    int start_record{};  ///< lines to skip
    std::string file;
    std::string header_file;
    std::vector<AsciiField> data;
    std::vector<AsciiField> match;

    ParameterList parameters();
    static DialogTexts window_texts();
    void log(const FlowItem& item) const;

    [[nodiscard]] bool find_words(const FlowItem& item, const TraceHeaderDefinition& header);
    [[nodiscard]] bool check(const FlowItem& item) const;
    /// The file, after the lines to skip; nothing when it cannot be opened.
    std::optional<LineReader> open(const FlowItem& item) const;
    /// Writes the values of the line that `lines` has just given into the header; whether it
    /// completes a record.
    bool take_line(std::string_view line, const LineReader& lines,
                   TraceHeaderDefinition& header) const;
    /// Whether some word of the lists is a coordinate of a trace.
    bool has_coordinates() const;

private:
    std::vector<std::string> preview() const;
};

}  // namespace halvern
