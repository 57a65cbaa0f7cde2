#pragma once

#include <string>
#include <string_view>
#include <system_error>

// Replaces a file atomically: the new content is written to the temporary file
// `<path>.tmp` beside it, flushed to disk and renamed over `<path>`, so a reader (or a
// crash) sees the old file or the new one, never a part of either.
//
//     FolderLock lock;
//     if (auto ec = lock.acquire(folderOfFile(path), kFolderLockTimeout)) return fail(ec);
//     AtomicFile out(path);
//     if (auto ec = out.open()) return fail(ec);
//     out.writeLine("...");
//     if (auto ec = out.commit()) return fail(ec);
//
// Writers of one file take turns: each holds a FolderLock on the file's folder from
// before open() until after commit(), so that one fixed temporary name per file is
// enough and nothing else is ever left beside it. A temporary file that a killed
// program left behind is replaced by the next open() of the same file.
//
// The new file keeps the old one's permission bits and, when the program runs as
// root, its owner and group; a file that did not exist gets 0666 less the umask.
//
// Writes are buffered; the first write error is remembered and returned by commit().
// An object destroyed without a successful commit() removes its temporary file.
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
    [[nodiscard]] std::error_code keepOldMode();
    void flushBuffer();

    std::string m_path;
    std::string m_tempPath;
    std::string m_buffer;
    std::error_code m_error;
    int m_fd = -1;
    bool m_created = false;
    bool m_renamed = false;
};

// Replaces `path` with `bytes` through an AtomicFile, under the lock on its folder
// (see above): the caller must not hold that lock itself.
[[nodiscard]] std::error_code replaceFileAtomically(const std::string& path,
                                                    std::string_view bytes);
