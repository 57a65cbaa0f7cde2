#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Whole-file operations on the host's file system. Every call reports what went
// wrong instead of throwing.

// Reads a whole regular file, never through a link (see RegularFile). On failure
// `bytes` is left empty.
[[nodiscard]] std::error_code readWholeFile(const std::string& path, std::string& bytes);

// Removes a file (not a folder). A missing file is no error.
[[nodiscard]] std::error_code removeFile(const std::string& path);

// Renames `from` to `to`, failing with EEXIST when `to` exists: never overwrites.
[[nodiscard]] std::error_code renameNoReplace(const std::string& from, const std::string& to);

// Creates one folder with the given mode; an existing folder is no error.
[[nodiscard]] std::error_code createFolder(const std::string& path, unsigned mode = 0777);

// Takes the group's and others' permissions from a folder that the user owns; a link,
// a file or another user's folder is left as it is.
[[nodiscard]] std::error_code restrictFolderToOwner(const std::string& path);

// Creates a new folder, mode 0700, named `prefix` followed by six characters that make
// the name unique, and sets `path` to it.
[[nodiscard]] std::error_code createUniqueFolder(const std::string& prefix, std::string& path);

// Creates a folder and its missing parents, each with the given mode.
[[nodiscard]] std::error_code createFolders(const std::string& path, unsigned mode = 0777);

// True when the owner of an existing file has no write permission. Root ignores the
// permission bits, so the stores ask this before they replace a file, to fail as
// any other user would.
[[nodiscard]] bool isReadOnlyFile(const std::string& path);

// Makes a folder the current folder (the process's, or the thread's own) for the
// object's lifetime, so that many calls on the entries of one folder pass short relative
// names and the kernel does not walk the whole path each time. The folder that was
// current comes back afterwards.
class CurrentFolder {
public:
    CurrentFolder();
    ~CurrentFolder();
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

    // False (and nothing changed) when the folder cannot be entered.
    [[nodiscard]] bool enter(const std::string& folder);

private:
    int m_saved = -1;
    bool m_entered = false;
};

// Gives the calling thread a current folder of its own, so that it may use
// CurrentFolder while other threads rely on theirs. False where the system refuses;
// the thread must then leave the current folder alone.
[[nodiscard]] bool ownCurrentFolder();

// One entry of a folder, as the folder lists it: a folder is a real folder, not a link.
struct FolderItem {
    std::string name;
    bool isFolder = false;
    bool isLink = false;
    ino_t inode = 0;  // as the listing gave it
};

// The entries of a folder, "." and ".." left out, in the order the folder keeps them.
[[nodiscard]] std::error_code readFolder(const std::string& folder, std::vector<FolderItem>& items);
