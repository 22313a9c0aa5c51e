#include "support/log_capture.h"

#include <stdexcept>

#include "foundation/messages.h"

namespace halvern::testing_support {

namespace {
LogCapture* innermost = nullptr;
}

LogCapture::LogCapture() : stream_(std::tmpfile()), outer_(innermost) {
    if (!stream_) throw std::runtime_error("no temporary file for the log");
    innermost = this;
    LogDestination::UseStream(stream_);
}

LogCapture::~LogCapture() {
    innermost = outer_;
    if (outer_) {
        std::fputs(text().c_str(), outer_->stream_);
        LogDestination::UseStream(outer_->stream_);
    } else {
        LogDestination::UseStandardOutput();
    }
    std::fclose(stream_);
}

std::string LogCapture::text() const { return text_of(stream_); }

std::string text_of(std::FILE* stream) {
    std::fflush(stream);
    std::rewind(stream);
    std::string text;
    char block[4096];
    while (const std::size_t n = std::fread(block, 1, sizeof block, stream)) text.append(block, n);
    std::fseek(stream, 0, SEEK_END);
    return text;
}

}  // namespace halvern::testing_support
