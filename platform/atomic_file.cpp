#include "platform/atomic_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include "platform/folder_lock.h"
#include "platform/regular_file.h"
#include "platform/xattr.h"

namespace {

constexpr std::size_t kFlushAt = 1 << 16;

// The crash test hook (see the header): counts down the steps left before the kill.
void stepDone() {
    static long stepsLeft = [] {
        const char* value = std::getenv("VESKOR_TEST_STOP_AFTER_WRITES");
        return value ? std::strtol(value, nullptr, 10) : 0L;
    }();
    if (stepsLeft > 0 && --stepsLeft == 0)
        (void)std::raise(SIGKILL);
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

// The rename is only durable once the folder's entry is on disk too.
void syncParentFolder(const std::string& path) {
    int fd = ::open(folderOfFile(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

// Six letters or digits that no one can guess ahead of the save.
std::string randomSuffix() {
    static constexpr std::string_view kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    unsigned char bytes[6] = {};
    if (::getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        static std::random_device device;
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(device());
    }
    std::string suffix;
    for (unsigned char byte : bytes)
        suffix += kLetters[byte % kLetters.size()];
    return suffix;
}

}  // namespace

AtomicFile::AtomicFile(std::string path) : m_path(std::move(path)) {}

AtomicFile::~AtomicFile() {
    if (!m_renamed)
        discard();
}

// The old file is opened, if it can be, so that its mode and attributes come from the
// file itself, not from whatever its name may point at a moment later.
std::error_code AtomicFile::open() {
    RegularFile old;
    std::error_code ec = old.open(m_path);
    if (!ec)
        return create(&old.status(), old.fd(), false);
    if (ec == std::errc::no_such_file_or_directory)
        return create(nullptr, -1, false);
    struct stat status {};
    if (ec != std::errc::permission_denied || ::lstat(m_path.c_str(), &status) != 0)
        return ec;
    return create(&status, -1, false);
}

std::error_code AtomicFile::open(const RegularFile& old) {
    if (!old.isOpen())
        return open();
    // Asked again: the mode may have changed since the file was opened.
    struct stat status {};
    if (::fstat(old.fd(), &status) != 0)
        return lastError();
    return create(&status, old.fd(), true);
}

// Root ignores the permission bits, so a file its owner may not write is refused here,
// as it would be for anyone else.
std::error_code AtomicFile::create(const struct stat* old, int oldFd, bool ownerKnown) {
    if (old && S_ISLNK(old->st_mode))
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    if (old && !S_ISREG(old->st_mode))
        return notRegularFileError();
    if (old && (old->st_mode & S_IWUSR) == 0)
        return std::make_error_code(std::errc::permission_denied);
    if (auto ec = createTemp())
        return ec;
    stepDone();
    if (auto ec = setMode(old, ownerKnown)) {
        discard();
        return ec;
    }
    // A description given to the file itself, or an ACL, stays with it; an ACL would
    // open private data to others, so private data keeps its plain mode.
    if (oldFd >= 0)
        copyFileAttributes(oldFd, m_fd, !m_private);
    return {};
}

// A fresh name each time, created exclusively: a file that another user put at any
// name we might pick is neither opened nor removed, only passed over.
std::error_code AtomicFile::createTemp() {
    constexpr int kAttempts = 100;
    for (int i = 0; i < kAttempts; ++i) {
        m_tempPath = m_path + "." + randomSuffix() + ".tmp";
        m_fd =
            ::open(m_tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (m_fd >= 0) {
            m_created = true;
            return {};
        }
        if (errno != EEXIST)
            return lastError();
    }
    return std::make_error_code(std::errc::file_exists);
}

// The new file takes over what the user set on the old one, except the bits that would
// let it run with another user's rights. Only root may hand a file to another owner,
// and only to the owner of the file whose content it read; anyone else's new file is
// theirs, as any rewrite would be.
std::error_code AtomicFile::setMode(const struct stat* old, bool ownerKnown) {
    mode_t mode = 0;
    if (m_private) {
        mode = 0600;
    } else if (old) {
        mode = old->st_mode & 0777;
    } else {
        struct stat created {};
        if (::fstat(m_fd, &created) != 0)
            return lastError();
        mode = created.st_mode & 0777 & static_cast<mode_t>(m_newModeMask);
    }
    if (old && ownerKnown && !m_private && ::geteuid() == 0 &&
        ::fchown(m_fd, old->st_uid, old->st_gid) != 0)
        return lastError();
    if (::fchmod(m_fd, mode) != 0)
        return lastError();
    return {};
}

void AtomicFile::write(std::string_view bytes) {
    m_buffer.append(bytes);
    if (m_buffer.size() >= kFlushAt)
        flushBuffer();
}

void AtomicFile::writeLine(std::string_view line) {
    write(line);
    write("\r\n");
}

void AtomicFile::flushBuffer() {
    if (m_fd < 0 && !m_error)
        m_error = std::make_error_code(std::errc::bad_file_descriptor);
    std::size_t done = 0;
    while (!m_error && done < m_buffer.size()) {
        ssize_t n = ::write(m_fd, m_buffer.data() + done, m_buffer.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            m_error = lastError();
        else
            done += static_cast<std::size_t>(n);
        stepDone();
    }
    m_buffer.clear();
}

std::error_code AtomicFile::commit() {
    flushBuffer();
    if (!m_error && ::fsync(m_fd) != 0)
        m_error = lastError();
    stepDone();
    if (m_fd >= 0 && ::close(m_fd) != 0 && !m_error)
        m_error = lastError();
    m_fd = -1;
    if (!m_error && ::rename(m_tempPath.c_str(), m_path.c_str()) != 0)
        m_error = lastError();
    m_renamed = !m_error;
    stepDone();
    if (!m_error)
        syncParentFolder(m_path);
    return m_error;
}

void AtomicFile::discard() {
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    if (m_created && !m_renamed)
        ::unlink(m_tempPath.c_str());
    m_created = false;
}

namespace {

std::error_code replaceUnderLock(const std::string& path, std::string_view bytes,
                                 bool makePrivate) {
    FolderLock lock;
    if (auto ec = lock.acquire(folderOfFile(path), kFolderLockTimeout))
        return ec;
    AtomicFile out(path);
    if (makePrivate)
        out.makePrivate();
    if (auto ec = out.open())
        return ec;
    out.write(bytes);
    auto ec = out.commit();
    if (ec)
        out.discard();
    return ec;
}

}  // namespace

std::error_code replaceFileAtomically(const std::string& path, std::string_view bytes) {
    return replaceUnderLock(path, bytes, false);
}

std::error_code replacePrivateFileAtomically(const std::string& path, std::string_view bytes) {
    return replaceUnderLock(path, bytes, true);
}
