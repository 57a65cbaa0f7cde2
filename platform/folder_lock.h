#pragma once

#include <chrono>
#include <string>
#include <system_error>

// An advisory lock (flock) on a folder, held for the object's lifetime, so that
// running copies of the program take turns at rewriting a file in it. The lock is on
// the folder itself: it leaves nothing in the folder, works before the file exists,
// and still holds when another writer renames a new file over the old one.
//
// Every program that rewrites a file shared by many targets takes the lock of the
// file's folder for the whole read, write and rename. A second FolderLock on the same
// folder in the same process waits like any other copy would.
class FolderLock {
public:
    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    // Waits up to `timeout` for the lock; ETIMEDOUT when another holder kept it, and
    // the open() error when the folder cannot be opened (it is missing, say). On a
    // file system that has no such locks (NFS refuses them on folders) it succeeds
    // without holding anything: writers there no longer take turns, but still work.
    [[nodiscard]] std::error_code acquire(const std::string& folder,
                                          std::chrono::milliseconds timeout);
    void release();

private:
    int m_fd = -1;
};

// How long a writer waits for another copy of the program to finish its rewrite
// before the store gives up with its own error message.
inline constexpr std::chrono::milliseconds kFolderLockTimeout{10000};

// The folder whose lock guards `file`: everything up to and including its last "/",
// "." when it has none.
[[nodiscard]] std::string folderOfFile(const std::string& file);
