#include "platform/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace {

// Errors that say the file system keeps no such locks, rather than that someone
// holds this one.
bool lockingUnsupported(int error) {
    return error == ENOLCK || error == EOPNOTSUPP || error == ENOTSUP || error == EBADF ||
           error == EINVAL;
}

}  // namespace

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
        const int error = errno;
        if (error != EWOULDBLOCK && error != EINTR) {
            release();
            return lockingUnsupported(error) ? std::error_code()
                                             : std::error_code(error, std::generic_category());
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

std::string folderOfFile(const std::string& file) {
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? std::string(".") : file.substr(0, slash + 1);
}
