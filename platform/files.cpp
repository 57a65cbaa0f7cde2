#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "platform/regular_file.h"

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

}  // namespace

std::error_code readWholeFile(const std::string& path, std::string& bytes) {
    bytes.clear();
    RegularFile file;
    if (auto ec = file.open(path))
        return ec;
    return readRest(file, bytes, std::numeric_limits<std::uint64_t>::max());
}

std::error_code removeFile(const std::string& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        return lastError();
    return {};
}

std::error_code renameNoReplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0)
        return lastError();
    return {};
}

std::error_code createFolder(const std::string& path, unsigned mode) {
    if (::mkdir(path.c_str(), static_cast<mode_t>(mode)) == 0)
        return {};
    int err = errno;
    struct stat st {};
    if (err == EEXIST && ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        return {};
    return {err, std::generic_category()};
}

std::error_code restrictFolderToOwner(const std::string& path) {
    int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return lastError();
    struct stat st {};
    std::error_code ec;
    if (::fstat(fd, &st) != 0 || (st.st_uid == ::geteuid() && (st.st_mode & 077) != 0 &&
                                  ::fchmod(fd, st.st_mode & 07700) != 0))
        ec = lastError();
    ::close(fd);
    return ec;
}

std::error_code createUniqueFolder(const std::string& prefix, std::string& path) {
    path = prefix + "XXXXXX";
    if (!::mkdtemp(path.data()))
        return lastError();
    return {};
}

std::error_code createFolders(const std::string& path, unsigned mode) {
    for (std::size_t pos = path.find('/', 1); pos != std::string::npos;
         pos = path.find('/', pos + 1)) {
        if (auto ec = createFolder(path.substr(0, pos), mode))
            return ec;
    }
    if (!path.empty() && path.back() != '/')
        return createFolder(path, mode);
    return {};
}

bool isReadOnlyFile(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && (st.st_mode & S_IWUSR) == 0;
}

CurrentFolder::CurrentFolder() : m_saved(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

CurrentFolder::~CurrentFolder() {
    if (m_saved < 0)
        return;
    if (m_entered) {
        [[maybe_unused]] int restored = ::fchdir(m_saved);
    }
    ::close(m_saved);
}

bool CurrentFolder::enter(const std::string& folder) {
    // Without a way back, the process's current folder is never changed.
    if (m_saved < 0 || ::chdir(folder.c_str()) != 0)
        return false;
    m_entered = true;
    return true;
}

bool ownCurrentFolder() {
    return ::unshare(CLONE_FS) == 0;
}

std::error_code readFolder(const std::string& folder, std::vector<FolderItem>& items) {
    items.clear();
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return lastError();
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        bool isFolder = entry->d_type == DT_DIR;
        bool isLink = entry->d_type == DT_LNK;
        // Some file systems do not say what an entry is; ask then, without following links.
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st {};
            const bool known =
                ::fstatat(::dirfd(dir), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0;
            isFolder = known && S_ISDIR(st.st_mode);
            isLink = known && S_ISLNK(st.st_mode);
        }
        items.push_back({std::string(name), isFolder, isLink, entry->d_ino});
    }
    std::error_code ec = errno ? lastError() : std::error_code();
    ::closedir(dir);
    return ec;
}
