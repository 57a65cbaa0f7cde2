#include "platform/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <set>
#include <thread>
#include <utility>

namespace {

using FolderId = std::pair<dev_t, ino_t>;

// The folders whose turns the calling thread holds.
thread_local std::set<FolderId> t_turns;

std::optional<FolderId> folderIdOf(int fd) {
    struct stat st {};
    if (::fstat(fd, &st) != 0)
        return std::nullopt;
    return FolderId{st.st_dev, st.st_ino};
}

// Errors that say the file system keeps no such locks, rather than that someone
// holds this one. (ENOTSUP is EOPNOTSUPP on Linux.)
bool lockingUnsupported(int error) {
    return error == ENOLCK || error == EOPNOTSUPP || error == EBADF || error == EINVAL;
}

// Waits for the lock on an open folder. Where the file system keeps no such locks,
// succeeds without one; on any failure the descriptor is left open for the caller.
std::error_code waitForLock(int fd, std::chrono::steady_clock::time_point deadline) {
    auto pause = std::chrono::milliseconds(1);
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        if (error != EWOULDBLOCK && error != EINTR)
            return lockingUnsupported(error) ? std::error_code()
                                             : std::error_code(error, std::generic_category());
        if (std::chrono::steady_clock::now() >= deadline)
            return std::make_error_code(std::errc::timed_out);
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::milliseconds(50));
    }
    return {};
}

int openFolder(const std::string& folder) {
    return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

}  // namespace

FolderLock::~FolderLock() {
    release();
}

std::error_code FolderLock::acquire(const std::string& folder, std::chrono::milliseconds timeout) {
    release();
    m_fd = openFolder(folder);
    if (m_fd < 0)
        return {errno, std::generic_category()};
    if (auto id = folderIdOf(m_fd); id && t_turns.contains(*id)) {
        release();  // this thread's turn already holds it
        return {};
    }
    if (auto ec = waitForLock(m_fd, std::chrono::steady_clock::now() + timeout)) {
        release();
        return ec;
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

struct ItemTurns::Held {
    explicit Held(int descriptor) : fd(descriptor) {}
    ~Held() { ::close(fd); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    int fd;
    FolderId id{};
};

// The folders opened, without those this thread holds already, one per folder, in
// the order of their ids.
std::vector<std::unique_ptr<ItemTurns::Held>> ItemTurns::openInOrder(
    const std::vector<std::string>& folders) {
    std::vector<std::unique_ptr<Held>> opened;
    for (const std::string& folder : folders) {
        const int fd = openFolder(folder);
        if (fd < 0)
            continue;
        auto held = std::make_unique<Held>(fd);
        const std::optional<FolderId> id = folderIdOf(fd);
        if (!id || t_turns.contains(*id))
            continue;
        held->id = *id;
        opened.push_back(std::move(held));
    }
    auto byId = [](const auto& a, const auto& b) { return a->id < b->id; };
    std::sort(opened.begin(), opened.end(), byId);
    auto sameId = [](const auto& a, const auto& b) { return a->id == b->id; };
    opened.erase(std::unique(opened.begin(), opened.end(), sameId), opened.end());
    return opened;
}

ItemTurns::ItemTurns() = default;

ItemTurns::~ItemTurns() {
    release();
}

std::error_code ItemTurns::acquire(const std::vector<std::string>& folders,
                                   std::chrono::milliseconds timeout) {
    release();
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (auto& held : openInOrder(folders)) {
        if (auto ec = waitForLock(held->fd, deadline)) {
            release();
            return ec;
        }
        t_turns.insert(held->id);
        m_held.push_back(std::move(held));
    }
    return {};
}

void ItemTurns::release() {
    for (const auto& held : m_held) {
        t_turns.erase(held->id);
        ::flock(held->fd, LOCK_UN);
    }
    m_held.clear();
}
