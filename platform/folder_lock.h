#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

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

// The turns that saves, moves and copies take, so that they never interleave on one
// item: each holds the FolderLock of every folder whose entries it changes (a move
// also the moved folder itself, whose entries change their paths) from before it
// looks at the entries until its last store is written. Being the folder's own lock,
// it works across users and leaves nothing in the folder.
//
// While a thread holds the turns of a folder, the FolderLocks and ItemTurns that it
// takes on that folder succeed at once without waiting for themselves, so that a move
// may rewrite the index it holds the turn of, and run a full save there.
class ItemTurns {
public:
    ItemTurns();
    ~ItemTurns();
    ItemTurns(const ItemTurns&) = delete;
    ItemTurns& operator=(const ItemTurns&) = delete;

    // Waits up to `timeout` in all for the locks of the folders, taken in one order
    // that every caller shares, so that two moves in opposite directions cannot wait
    // for each other. ETIMEDOUT when another holder kept one (none is then held). A
    // folder that cannot be opened (missing, not a folder, not readable) is skipped:
    // there is nothing in it to take turns at.
    [[nodiscard]] std::error_code acquire(const std::vector<std::string>& folders,
                                          std::chrono::milliseconds timeout);
    void release();

private:
    struct Held;
    static std::vector<std::unique_ptr<Held>> openInOrder(const std::vector<std::string>& folders);
    std::vector<std::unique_ptr<Held>> m_held;
};

// How long a writer waits for another copy of the program to finish its rewrite
// before the store gives up with its own error message.
inline constexpr std::chrono::milliseconds kFolderLockTimeout{10000};

// The folder whose lock guards `file`: everything up to and including its last "/",
// "." when it has none.
[[nodiscard]] std::string folderOfFile(const std::string& file);
