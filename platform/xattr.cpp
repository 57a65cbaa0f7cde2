#include "platform/xattr.h"

#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>

namespace {

// Most values and lists fit a first read of this size, which then needs no question
// about the size first: listings read the attributes of many entries. The kernel
// sets aside as much as the buffer offers, so it stays small.
constexpr std::size_t kFirstRead = 4096;

char* scratchBuffer() {
    thread_local char buffer[kFirstRead];
    return buffer;
}

constexpr std::string_view kUserPrefix = "user.";

// The name in the attribute's namespace; valid until the thread's next call. Listings
// name a few attributes per entry, so the buffer is reused rather than allocated.
const char* attributeName(std::string_view name) {
    thread_local std::string buffer;
    buffer.assign(kUserPrefix);
    buffer.append(name);
    return buffer.c_str();
}

StreamStatus statusOf(int err) {
    switch (err) {
        case ENODATA:
            return StreamStatus::Missing;
        case ENOTSUP:
            return StreamStatus::NotSupported;
        case EACCES:
        case EPERM:
            return StreamStatus::PermissionDenied;
        default:
            return StreamStatus::Failed;
    }
}

}  // namespace

std::vector<std::string_view> splitNames(std::string_view list) {
    std::vector<std::string_view> names;
    for (std::size_t start = 0; start < list.size();) {
        std::size_t end = std::min(list.find('\0', start), list.size());
        names.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

StreamStatus readStream(const std::string& path, std::string_view name, std::string& bytes) {
    const char* attr = attributeName(name);
    bytes.clear();
    ssize_t got = ::getxattr(path.c_str(), attr, scratchBuffer(), kFirstRead);
    if (got >= 0) {
        bytes.assign(scratchBuffer(), static_cast<std::size_t>(got));
        return StreamStatus::Ok;
    }
    if (errno != ERANGE)
        return statusOf(errno);
    // The value may grow between asking its size and reading it; ask again then.
    for (int attempt = 0; attempt < 4; ++attempt) {
        ssize_t size = ::getxattr(path.c_str(), attr, nullptr, 0);
        if (size < 0)
            return statusOf(errno);
        bytes.resize(static_cast<std::size_t>(size));
        got = ::getxattr(path.c_str(), attr, bytes.data(), bytes.size());
        if (got >= 0) {
            bytes.resize(static_cast<std::size_t>(got));
            return StreamStatus::Ok;
        }
        if (errno != ERANGE)
            break;
    }
    StreamStatus status = statusOf(errno);
    bytes.clear();
    return status == StreamStatus::Ok ? StreamStatus::Failed : status;
}

StreamStatus streamExists(const std::string& path, std::string_view name) {
    if (::getxattr(path.c_str(), attributeName(name), nullptr, 0) < 0)
        return statusOf(errno);
    return StreamStatus::Ok;
}

StreamStatus replaceStream(const std::string& path, std::string_view name, std::string_view bytes) {
    if (::setxattr(path.c_str(), attributeName(name), bytes.data(), bytes.size(), 0) < 0)
        return statusOf(errno);
    return StreamStatus::Ok;
}

StreamStatus listStreams(const std::string& path, std::string& names) {
    names.clear();
    std::string all;  // a list longer than the first read
    ssize_t got = ::listxattr(path.c_str(), scratchBuffer(), kFirstRead);
    const bool firstRead = got >= 0;
    // The list may grow between asking its size and reading it; ask again then.
    for (int attempt = 0; got < 0 && errno == ERANGE && attempt < 4; ++attempt) {
        ssize_t size = ::listxattr(path.c_str(), nullptr, 0);
        if (size < 0)
            break;
        all.resize(static_cast<std::size_t>(size));
        got = size == 0 ? 0 : ::listxattr(path.c_str(), all.data(), all.size());
    }
    if (got < 0) {
        StreamStatus status = statusOf(errno);
        return status == StreamStatus::Ok ? StreamStatus::Failed : status;
    }
    const std::string_view list(firstRead ? scratchBuffer() : all.data(),
                                static_cast<std::size_t>(got));
    constexpr std::string_view kUser = "user.";
    for (std::size_t start = 0; start < list.size();) {
        std::size_t end = std::min(list.find('\0', start), list.size());
        std::string_view name = list.substr(start, end - start);
        if (name.starts_with(kUser)) {
            names += name.substr(kUser.size());
            names += '\0';
        }
        start = end + 1;
    }
    return StreamStatus::Ok;
}

StreamStatus removeStream(const std::string& path, std::string_view name) {
    if (::removexattr(path.c_str(), attributeName(name)) < 0)
        return statusOf(errno);
    return StreamStatus::Ok;
}

StreamName probeStreamName(const std::string& path, std::string_view name) {
    StreamStatus status = streamExists(path, name);
    if (status == StreamStatus::Ok)
        return StreamName::Allowed;
    if (status == StreamStatus::NotSupported)
        return StreamName::NoStreams;
    if (status != StreamStatus::Missing)
        return StreamName::Unknown;
    // Replacing a stream that does not exist changes nothing; the volume checks the name
    // first.
    if (::setxattr(path.c_str(), attributeName(name), "", 0, XATTR_REPLACE) == 0)
        return StreamName::Allowed;
    switch (errno) {
        case ENODATA:
            return StreamName::Allowed;
        case EINVAL:
            return StreamName::Refused;
        case ENOTSUP:
            return StreamName::NoStreams;
        default:
            return StreamName::Unknown;
    }
}

namespace {

// The value of one attribute of an open file; nullopt when it cannot be read.
std::optional<std::string> attributeOf(int fd, const char* name) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t size = ::fgetxattr(fd, name, nullptr, 0);
        if (size < 0)
            return std::nullopt;
        std::string value(static_cast<std::size_t>(size), '\0');
        const ssize_t got = ::fgetxattr(fd, name, value.data(), value.size());
        if (got >= 0) {
            value.resize(static_cast<std::size_t>(got));
            return value;
        }
        if (errno != ERANGE)  // grown meanwhile: ask again
            return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

void copyFileAttributes(int fromFd, int toFd, bool withAcl) {
    const ssize_t size = ::flistxattr(fromFd, nullptr, 0);
    if (size <= 0)
        return;
    std::string names(static_cast<std::size_t>(size), '\0');
    const ssize_t got = ::flistxattr(fromFd, names.data(), names.size());
    if (got <= 0)
        return;
    names.resize(static_cast<std::size_t>(got));
    for (std::string_view name : splitNames(names)) {
        const std::string key(name);
        if (!key.starts_with(kUserPrefix) && !(withAcl && key == "system.posix_acl_access"))
            continue;
        if (std::optional<std::string> value = attributeOf(fromFd, key.c_str()))
            (void)::fsetxattr(toFd, key.c_str(), value->data(), value->size(), 0);
    }
}
