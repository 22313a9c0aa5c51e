#pragma once

#include <string>

#include "flow/parameter.h"
#include "trace/sample_format.h"

namespace halvern {

// Rows that several inputs and outputs declare, and what belongs to them.

/// HEADERFILE: the description that traces are read with.
Parameter header_file_parameter(std::string& path, const char* prompt, const char* help);

/// OUTPUTFORMAT: how an output encodes samples.
Parameter output_format_parameter(int& entered);
/// What an OUTPUTFORMAT stands for; whatever is no format of its own is IBM.
SampleFormat chosen_output_format(int entered);
/// The log line about the format chosen.
const char* output_type_line(SampleFormat format);

/// FILE: a text file with an item's table, in place of rows in the flow. Written and logged only
/// where one was chosen.
Parameter table_file_parameter(std::string& path);

}  // namespace halvern
