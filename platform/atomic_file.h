#pragma once

#include <string>
#include <string_view>
#include <system_error>

// Replaces a file atomically: the new content is written to a temporary file beside
// it (`<path>.tmp<pid>-<n>`, a name of its own for each writer), flushed to disk and
// renamed over `<path>`, so a reader (or a crash) sees the old file or the new one,
// never a part of either. Two programs replacing the same file at once each rename a
// whole file of their own; the later rename wins.
//
//     AtomicFile out(path);
//     if (auto ec = out.open()) return fail(ec);
//     out.writeLine("...");
//     if (auto ec = out.commit()) return fail(ec);
//
// Writes are buffered; the first write error is remembered and returned by commit().
// An object destroyed without a successful commit() removes its temporary file; only
// a program killed while writing leaves one behind.
//
// Test hook: with the environment variable VESKOR_TEST_STOP_AFTER_WRITES=n (n >= 1)
// the process kills itself with SIGKILL right after the nth step that changes a file
// on disk, counted over all AtomicFiles of the run: creating a temporary file, each
// write() of it, its fsync and its rename. Tests use it to stop a save at every such
// point; without the variable nothing is counted.
class AtomicFile {
public:
    explicit AtomicFile(std::string path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Creates the temporary file. Fails with EACCES, without touching anything, when
    // `<path>` exists and its owner may not write it.
    [[nodiscard]] std::error_code open();

    void write(std::string_view bytes);
    // Writes the bytes followed by CR LF.
    void writeLine(std::string_view line);

    // Flushes, syncs and renames the temporary file over `<path>`.
    [[nodiscard]] std::error_code commit();

    // Closes and removes the temporary file.
    void discard();

    const std::string& path() const { return m_path; }
    const std::string& tempPath() const { return m_tempPath; }

private:
    void flushBuffer();

    std::string m_path;
    std::string m_tempPath;
    std::string m_buffer;
    std::error_code m_error;
    int m_fd = -1;
    bool m_renamed = false;
};

// Replaces `path` with `bytes` through an AtomicFile.
[[nodiscard]] std::error_code replaceFileAtomically(const std::string& path,
                                                    std::string_view bytes);
