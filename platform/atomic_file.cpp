#include "platform/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/files.h"
#include "platform/folder_lock.h"

namespace {

constexpr std::size_t kFlushAt = 1 << 16;

// The crash test hook (see the header): counts down the steps left before the kill.
void stepDone() {
    static long stepsLeft = [] {
        const char* value = std::getenv("VESKOR_TEST_STOP_AFTER_WRITES");
        return value ? std::strtol(value, nullptr, 10) : 0L;
    }();
    if (stepsLeft > 0 && --stepsLeft == 0)
        std::raise(SIGKILL);
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

}  // namespace

AtomicFile::AtomicFile(std::string path) : m_path(std::move(path)) {}

AtomicFile::~AtomicFile() {
    if (!m_renamed)
        discard();
}

// The new file takes over what the user set on the old one. Only root may hand a
// file to another owner; anyone else's new file is theirs, as any rewrite would be.
std::error_code AtomicFile::keepOldMode() {
    struct stat old {};
    if (::stat(m_path.c_str(), &old) != 0)
        return {};
    if (::geteuid() == 0 && ::fchown(m_fd, old.st_uid, old.st_gid) != 0)
        return lastError();
    if (::fchmod(m_fd, old.st_mode & 07777) != 0)
        return lastError();
    return {};
}

// Writers take turns under the folder's lock, so the one temporary name is this
// writer's alone; what is there already was left by a killed save and is replaced.
// Removing it first, rather than truncating it, never writes through a link that
// someone put in its place.
std::error_code AtomicFile::open() {
    if (isReadOnlyFile(m_path))
        return std::make_error_code(std::errc::permission_denied);
    m_tempPath = m_path + ".tmp";
    if (::unlink(m_tempPath.c_str()) != 0 && errno != ENOENT)
        return lastError();
    m_fd = ::open(m_tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (m_fd < 0)
        return lastError();
    m_created = true;
    stepDone();
    if (auto ec = keepOldMode()) {
        discard();
        return ec;
    }
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

std::error_code replaceFileAtomically(const std::string& path, std::string_view bytes) {
    FolderLock lock;
    if (auto ec = lock.acquire(folderOfFile(path), kFolderLockTimeout))
        return ec;
    AtomicFile out(path);
    if (auto ec = out.open())
        return ec;
    out.write(bytes);
    auto ec = out.commit();
    if (ec)
        out.discard();
    return ec;
}
