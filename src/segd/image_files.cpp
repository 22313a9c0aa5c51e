#include "segd/image_files.h"

#include "segd/record_reader.h"

namespace halvern::segd {

namespace {

std::string quoted(const std::string& path, const std::string& what) {
    return "'" + path + "' " + what;
}

std::string place_of(const RecordReader& reader) {
    return "trace " + std::to_string(reader.trace().sequence) + " of file number " +
           std::to_string(reader.header().file_number());
}

const char* words(HeaderFault fault) {
    switch (fault) {
        case HeaderFault::kRevision3:
            return "is SEG-D revision 3, which cannot be read";
        case HeaderFault::kFormat:
            return "has samples in another format than 8015, 8036, 8048 and 8058";
        case HeaderFault::kChannelSet:
            return "has a channel set that makes no sense";
        default:
            return "does not begin with a SEG-D record";
    }
}

}  // namespace

std::string split_records(const std::string& file, Dialect dialect,
                          const std::function<int(std::span<const std::byte>)>& block) {
    std::optional<FileBlockSource> source = FileBlockSource::open(file);
    if (!source) return quoted(file, "cannot be read");
    RecordReader reader(*source, dialect, true);
    std::string not_copied = "The blocks of " + quoted(file, "cannot be put on the image");
    bool any = false;
    for (;;) {
        const RecordReader::Record record = reader.next_record();
        if (record == RecordReader::Record::kEnd) {
            return any ? std::string{} : quoted(file, "holds no SEG-D record");
        }
        if (record != RecordReader::Record::kRecord) return quoted(file, words(reader.fault()));
        any = true;
        if (!reader.label().empty() && block(reader.label()) != 0) return not_copied;
        if (block(reader.header().bytes()) != 0) return not_copied;
        RecordReader::Next next;
        while ((next = reader.next_trace()) == RecordReader::Next::kTrace) {
            const Trace& trace = reader.trace();
            const std::int64_t there =
                samples_in(reader.header().format(), static_cast<std::int64_t>(trace.raw.size()));
            if (there < trace.samples) {
                return quoted(file, "ends within " + place_of(reader));
            }
            if (block(trace.bytes) != 0) return not_copied;
        }
        if (std::string trouble = source->trouble(); !trouble.empty()) {
            return quoted(file, "cannot be read: " + trouble);
        }
        if (next != RecordReader::Next::kEndOfRecord) {
            return quoted(file, "has no whole trace where " + place_of(reader) + " is due");
        }
        if (reader.left_over() > 0) {
            return quoted(file,
                          "has " + std::to_string(reader.left_over()) + " bytes that are no trace");
        }
        if (!reader.trailer().empty() && block(reader.trailer()) != 0) return not_copied;
    }
}

}  // namespace halvern::segd
