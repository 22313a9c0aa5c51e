#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "platform/fault.h"

namespace halvern {

/// Writes a file front to back through a C stream with a large buffer, so that what it accepted
/// reaches the system even when the process ends by exit. The system is handed whole pieces, as
/// write() took them: a process that is killed leaves none in part, unless the disk is full. The
/// first failure is kept: after it nothing more is written, and every later call gives it.
class BlockWriter {
public:
    enum class Mode {
        kCreate,  ///< a new file; one that exists is emptied
        kUpdate,  ///< over an existing file's bytes, which otherwise stay, and past its end
    };

    BlockWriter() = default;
    /// Closes; a failure then goes unreported, so finish() first.
    ~BlockWriter() { static_cast<void>(finish()); }
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    /// Opens `path`, after finishing what was open; kUpdate starts writing at `offset`. A fault for
    /// what is no file (a directory, a pipe).
    Fault open(const std::string& path, Mode mode, std::int64_t offset = 0);
    bool is_open() const { return stream_ != nullptr; }

    /// Gives the bytes that were accepted; fewer than `bytes`: it failed.
    [[nodiscard]] std::size_t write(std::span<const std::byte> bytes);
    /// Whether a piece of that size could wait here without anything going to the system.
    bool has_room(std::size_t bytes) const;
    /// Hands everything to the system. Gives why that or any write before it failed.
    Fault flush();
    /// Hands everything to the system and closes. Gives why that or any write before it failed; no
    /// fault when nothing is open.
    Fault finish();

    const Fault& fault() const { return fault_; }  ///< the first one since the last open

private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    void fail(int code);

    // The buffer outlives the stream, which empties it when it is closed.
    std::unique_ptr<char[]> buffer_;
    std::unique_ptr<std::FILE, Close> stream_;
    std::size_t waiting_ = 0;  // bytes in the buffer
    Fault fault_;
};

}  // namespace halvern
