#include "platform/regular_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

}  // namespace

RegularFile::~RegularFile() {
    close();
}

RegularFile::RegularFile(RegularFile&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)), m_status(other.m_status) {}

RegularFile& RegularFile::operator=(RegularFile&& other) noexcept {
    if (this != &other) {
        close();
        m_fd = std::exchange(other.m_fd, -1);
        m_status = other.m_status;
    }
    return *this;
}

// O_NONBLOCK keeps a FIFO put in the file's place from holding the open; the type is then
// checked on the descriptor itself, and reads of a regular file block as usual again.
std::error_code RegularFile::open(const std::string& path) {
    close();
    int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return lastError();
    std::error_code ec;
    if (::fstat(fd, &m_status) != 0)
        ec = lastError();  // NOLINT(bugprone-branch-clone): each step needs the one before
    else if (!S_ISREG(m_status.st_mode))
        ec = notRegularFileError();
    else if (::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0)
        ec = lastError();
    if (ec) {
        ::close(fd);
        return ec;
    }
    m_fd = fd;
    return {};
}

void RegularFile::close() {
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

std::error_code notRegularFileError() {
    return std::make_error_code(std::errc::not_supported);
}

std::error_code readRest(const RegularFile& file, std::string& bytes, std::uint64_t limit) {
    bytes.clear();
    char chunk[65536];
    for (;;) {
        ssize_t n = ::read(file.fd(), chunk, sizeof chunk);
        if (n == 0)
            return {};
        if (n < 0 && errno == EINTR)
            continue;
        std::error_code ec = n < 0 ? lastError() : std::error_code();
        if (!ec && bytes.size() + static_cast<std::size_t>(n) > limit)
            ec = std::make_error_code(std::errc::file_too_large);
        if (ec) {
            bytes.clear();
            return ec;
        }
        bytes.append(chunk, static_cast<std::size_t>(n));
    }
}
