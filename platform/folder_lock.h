#pragma once

#include <chrono>
#include <string>
#include <system_error>

// An advisory lock (flock) on a folder, held for the object's lifetime, so that two
// running copies of the program take turns at rewriting a file in it.
class FolderLock {
public:
    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    // Waits up to `timeout` for the lock; ETIMEDOUT when another holder kept it.
    [[nodiscard]] std::error_code acquire(const std::string& folder,
                                          std::chrono::milliseconds timeout);
    void release();

private:
    int m_fd = -1;
};
