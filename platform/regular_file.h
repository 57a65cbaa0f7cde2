#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <system_error>

// A regular file opened for reading through one descriptor. Store files lie in folders
// that other users may write, so the file is opened without following a link and without
// waiting on a FIFO, and anything but a regular file is refused. Its content, and the mode
// and owner that a replacement takes over (see AtomicFile), then all come from the same
// file, whatever is put under its name meanwhile.
class RegularFile {
public:
    RegularFile() = default;
    ~RegularFile();
    RegularFile(RegularFile&& other) noexcept;
    RegularFile& operator=(RegularFile&& other) noexcept;
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    // Opens `path` for reading. ENOENT when nothing is there, ELOOP for a link (even one
    // to a regular file), notRegularFileError() for anything else that is not a regular
    // file; on failure nothing stays open.
    [[nodiscard]] std::error_code open(const std::string& path);
    void close();

    bool isOpen() const { return m_fd >= 0; }
    int fd() const { return m_fd; }
    // What the descriptor showed when it was opened.
    const struct stat& status() const { return m_status; }

private:
    int m_fd = -1;
    struct stat m_status {};
};

// The error for a name that holds something other than a regular file.
[[nodiscard]] std::error_code notRegularFileError();

// Reads the rest of an open file; EFBIG, with `bytes` empty, when it holds more than
// `limit` bytes. On failure `bytes` is left empty.
[[nodiscard]] std::error_code readRest(const RegularFile& file, std::string& bytes,
                                       std::uint64_t limit);
