#pragma once

#include <string>
#include <string_view>
#include <system_error>

class RegularFile;
struct stat;

// Replaces a file atomically: the new content is written to a temporary file beside it,
// flushed to disk and renamed over `<path>`, so a reader (or a crash) sees the old file
// or the new one, never a part of either.
//
//     FolderLock lock;
//     if (auto ec = lock.acquire(folderOfFile(path), kFolderLockTimeout)) return fail(ec);
//     RegularFile old;                       // read the old file through `old` ...
//     AtomicFile out(path);
//     if (auto ec = out.open(old)) return fail(ec);
//     out.writeLine("...");
//     if (auto ec = out.commit()) return fail(ec);
//
// The temporary file is named `<path>.XXXXXX.tmp`, six random letters and digits, and
// created exclusively, so a name that someone else put there only makes open() pick
// another one. Nothing but our own temporary file is ever removed; a killed save leaves
// that one file behind. Writers of one file still take turns under the FolderLock of its
// folder, held from before the old file is read until after commit().
//
// What is at `<path>` is never followed: a link, a FIFO or anything else that is not a
// regular file makes open() fail with notRegularFileError() (ELOOP for a link), like a
// read-only file, and is left as it is. The new file keeps the old one's permission
// bits, never set-user-ID, set-group-ID or sticky; when the program runs as root, it also
// keeps the owner and group, but only of a file that the caller read through the
// descriptor it passes to open(). A file that did not exist gets 0666 less the umask.
// The old file's user extended attributes (a description given to the file itself) and
// its access ACL (not for private data, see makePrivate()) go over to the new file too,
// as far as the volume takes them; open() without a descriptor opens the old file for
// them itself, and where it may not read it, carries the mode alone.
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
    // The same for a file whose old content the caller read through `old`: the checks,
    // the mode and (as root) the owner come from that descriptor. An `old` that is not
    // open stands for a file that did not exist.
    [[nodiscard]] std::error_code open(const RegularFile& old);

    // Before open(): the new file gets mode 0600 whatever the old one had, for the
    // user's private data.
    void makePrivate() { m_private = true; }
    // Before open(): a file that did not exist gets no permission bit outside `mask`.
    void limitNewMode(unsigned mask) { m_newModeMask = mask; }

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
    [[nodiscard]] std::error_code create(const struct stat* old, int oldFd, bool ownerKnown);
    [[nodiscard]] std::error_code createTemp();
    [[nodiscard]] std::error_code setMode(const struct stat* old, bool ownerKnown);
    void flushBuffer();

    std::string m_path;
    std::string m_tempPath;
    std::string m_buffer;
    std::error_code m_error;
    unsigned m_newModeMask = 0777;
    int m_fd = -1;
    bool m_private = false;
    bool m_created = false;
    bool m_renamed = false;
};

// Replaces `path` with `bytes` through an AtomicFile, under the lock on its folder
// (see above): the caller must not hold that lock itself.
[[nodiscard]] std::error_code replaceFileAtomically(const std::string& path,
                                                    std::string_view bytes);
// The same for the user's private data: the new file's mode is 0600.
[[nodiscard]] std::error_code replacePrivateFileAtomically(const std::string& path,
                                                           std::string_view bytes);
