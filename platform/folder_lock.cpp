#include "platform/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

FolderLock::~FolderLock() {
    release();
}

std::error_code FolderLock::acquire(const std::string& folder, std::chrono::milliseconds timeout) {
    release();
    m_fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_fd < 0)
        return {errno, std::generic_category()};
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    auto pause = std::chrono::milliseconds(1);
    while (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            std::error_code ec{errno, std::generic_category()};
            release();
            return ec;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            release();
            return std::make_error_code(std::errc::timed_out);
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::milliseconds(50));
    }
    return {};
}

void FolderLock::release() {
    if (m_fd >= 0) {
        ::flock(m_fd, LOCK_UN);
        ::close(m_fd);
    }
    m_fd = -1;
}
