#include "flow/shared_parameters.h"

#include "foundation/system_paths.h"

namespace halvern {

namespace {
constexpr int code(SampleFormat format) { return static_cast<int>(format); }
}  // namespace

Parameter header_file_parameter(std::string& path, const char* prompt, const char* help) {
    return {
        .key = "HEADERFILE",
        .format = "%s",
        .value = Bound{&path, DefaultHeaderPath()},
        .log = "Header definition file name = %s\n",
        .field = {
            .label = "HeaderFile", .prompt = prompt, .help = help, .kind = FieldKind::kInputFile}};
}

Parameter output_format_parameter(int& entered) {
    return {.key = "OUTPUTFORMAT",
            .format = "%d",
            .value = Bound{&entered, code(SampleFormat::kInt16)},
            .field = {.label = "Format",
                      .prompt = "Format for output trace data?",
                      .choices = {{"16-bit Integer", code(SampleFormat::kInt16)},
                                  {"IEEE Floating Point", code(SampleFormat::kIeee)},
                                  {"IBM Floating Point", code(SampleFormat::kIbm)}}}};
}

SampleFormat chosen_output_format(int entered) {
    if (entered == code(SampleFormat::kInt16)) return SampleFormat::kInt16;
    return entered == code(SampleFormat::kIeee) ? SampleFormat::kIeee : SampleFormat::kIbm;
}

const char* output_type_line(SampleFormat format) {
    switch (format) {
        case SampleFormat::kInt16:
            return "Output type = 16-BIT Integer\n";
        case SampleFormat::kIeee:
            return "Output type = IEEE Floating Point\n";
        default:
            return "Output type = IBM Floating Point\n";
    }
}

Parameter table_file_parameter(std::string& path) {
    constexpr const char* kNone = "NONE";
    const bool chosen = !path.empty() && path != kNone;
    return {.key = "FILE",
            .format = "%s",
            .value = Bound{&path, kNone},
            .log = chosen ? "Table file = %s\n" : nullptr,
            .field = {.label = "File",
                      .prompt = "Text file with the table?",
                      .help = "In place of the rows below: lines as in a flow, or columns under "
                              "headings.\nNONE: the rows below.",
                      .kind = FieldKind::kInputFile,
                      .optional = true},
            .written = chosen};
}

}  // namespace halvern
