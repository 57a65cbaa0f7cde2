#include "cli/transfer_staging.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "platform/files.h"

namespace {

constexpr std::string_view kStagingPrefix = ".veskor-copy-";

std::error_code lastError() {
    return {errno, std::generic_category()};
}

void removeEntryAt(int parent, const std::string& name);

// Removes everything inside the open folder, never following a link: a link inside
// goes as a link, and a folder is entered only through its descriptor.
void emptyFolder(int fd) {
    const int listing = ::dup(fd);
    DIR* dir = listing < 0 ? nullptr : ::fdopendir(listing);
    if (!dir) {
        if (listing >= 0)
            ::close(listing);
        return;
    }
    ::rewinddir(dir);
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    ::closedir(dir);
    for (const std::string& name : names)
        removeEntryAt(fd, name);
}

void removeEntryAt(int parent, const std::string& name) {
    if (::unlinkat(parent, name.c_str(), 0) == 0)
        return;
    const int child =
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (child < 0)
        return;
    // A copied folder that its owner may not write keeps its entries from anyone but
    // root; it is ours, in our staging folder.
    (void)::fchmod(child, S_IRWXU);
    emptyFolder(child);
    ::close(child);
    (void)::unlinkat(parent, name.c_str(), AT_REMOVEDIR);
}

// Removes the emptied folder at `path` if it is still the one open as `fd`.
void removeEmptied(const std::string& path, int fd) {
    struct stat opened {
    }, named{};
    if (::fstat(fd, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
        opened.st_dev == named.st_dev && opened.st_ino == named.st_ino)
        (void)::rmdir(path.c_str());
}

bool isFolderOfOurs(int fd, bool privateOnly) {
    struct stat st {};
    return ::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::geteuid() &&
           (!privateOnly || (st.st_mode & 077) == 0);
}

}  // namespace

StagingFolder::~StagingFolder() {
    if (m_fd < 0)
        return;
    emptyFolder(m_fd);
    removeEmptied(m_folder + m_name, m_fd);
    ::close(m_fd);
}

std::error_code StagingFolder::create(const std::string& folder) {
    std::string path;
    if (auto ec = createUniqueFolder(folder + std::string(kStagingPrefix), path))
        return ec;
    m_folder = folder;
    m_name = path.substr(folder.size());
    // Without O_CLOEXEC: cp inherits the descriptor and reaches the folder through it.
    m_fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (m_fd < 0)
        return lastError();
    if (!isFolderOfOurs(m_fd, true)) {
        ::close(m_fd);
        m_fd = -1;
        return std::make_error_code(std::errc::operation_not_permitted);
    }
    // Where the file system keeps no locks, an abandoned folder is never removed.
    (void)::flock(m_fd, LOCK_EX | LOCK_NB);
    return {};
}

std::string StagingFolder::childPath(std::string_view name) const {
    return "/proc/self/fd/" + std::to_string(m_fd) + "/" + std::string(name);
}

std::error_code StagingFolder::moveOut(std::string_view name, const std::string& to) const {
    if (::renameat2(m_fd, std::string(name).c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0)
        return lastError();
    return {};
}

bool isStagingFolderName(std::string_view name) {
    return name.starts_with(kStagingPrefix);
}

void removeAbandonedStagingFolders(const std::string& folder) {
    std::vector<FolderItem> items;
    if (readFolder(folder, items))
        return;
    for (const FolderItem& item : items) {
        if (!item.isFolder || !isStagingFolderName(item.name))
            continue;
        const std::string path = folder + item.name;
        const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0)
            continue;
        // The copy that made it holds its lock until it ends, however it ends.
        if (isFolderOfOurs(fd, false) && ::flock(fd, LOCK_EX | LOCK_NB) == 0) {
            emptyFolder(fd);
            removeEmptied(path, fd);
        }
        ::close(fd);
    }
}
