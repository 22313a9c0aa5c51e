#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace halvern {

/// Writes a file front to back through a C stream with a large buffer, so that what it accepted
/// reaches the system even when the process ends by exit. Every failure is kept: after the first
/// one nothing more is written, and finish() reports it.
class BlockWriter {
public:
    enum class Mode {
        kCreate,  ///< a new file; one that exists is emptied
        kAppend,  ///< behind the end of a file, which is made when it does not exist
        kUpdate,  ///< over an existing file's bytes, which otherwise stay
    };

    BlockWriter() = default;
    /// Closes; a failure then goes unreported, so finish() first.
    ~BlockWriter() { static_cast<void>(finish()); }
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    /// Opens `path`; kUpdate starts writing at `offset`. 0 or -1.
    [[nodiscard]] int open(const std::string& path, Mode mode, std::int64_t offset = 0);
    bool is_open() const { return stream_ != nullptr; }

    /// Gives the bytes that were accepted; fewer than `bytes`: it failed.
    [[nodiscard]] std::size_t write(std::span<const std::byte> bytes);
    /// Hands everything to the system. 0, or -1 when that or any write before it failed.
    [[nodiscard]] int flush();
    /// Hands everything to the system and closes. 0, or -1 when that or any write before it failed;
    /// 0 when nothing is open.
    [[nodiscard]] int finish();

    /// Why the first failure happened, in the system's words.
    std::string reason() const;

private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    void fail();

    // The buffer outlives the stream, which empties it when it is closed.
    std::unique_ptr<char[]> buffer_;
    std::unique_ptr<std::FILE, Close> stream_;
    int error_ = 0;  // of the first failure, as errno
    bool failed_ = false;
};

}  // namespace halvern
