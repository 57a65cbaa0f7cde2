#include "platform/xattr.h"

#include <sys/xattr.h>

#include <cerrno>

namespace {

std::string attributeName(std::string_view name) {
    return "user." + std::string(name);
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

StreamStatus readStream(const std::string& path, std::string_view name, std::string& bytes) {
    bytes.clear();
    const std::string attr = attributeName(name);
    // The value may grow between asking its size and reading it; ask again then.
    for (int attempt = 0; attempt < 4; ++attempt) {
        ssize_t size = ::getxattr(path.c_str(), attr.c_str(), nullptr, 0);
        if (size < 0)
            return statusOf(errno);
        bytes.resize(static_cast<std::size_t>(size));
        ssize_t got = ::getxattr(path.c_str(), attr.c_str(), bytes.data(), bytes.size());
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
    if (::getxattr(path.c_str(), attributeName(name).c_str(), nullptr, 0) < 0)
        return statusOf(errno);
    return StreamStatus::Ok;
}

StreamStatus replaceStream(const std::string& path, std::string_view name, std::string_view bytes) {
    if (::setxattr(path.c_str(), attributeName(name).c_str(), bytes.data(), bytes.size(), 0) < 0)
        return statusOf(errno);
    return StreamStatus::Ok;
}

StreamStatus listStreams(const std::string& path, std::string& names) {
    names.clear();
    std::string all;
    // The list may grow between asking its size and reading it; ask again then.
    for (int attempt = 0; attempt < 4; ++attempt) {
        ssize_t size = ::listxattr(path.c_str(), nullptr, 0);
        if (size < 0)
            return statusOf(errno);
        all.resize(static_cast<std::size_t>(size));
        ssize_t got = size == 0 ? 0 : ::listxattr(path.c_str(), all.data(), all.size());
        if (got >= 0) {
            all.resize(static_cast<std::size_t>(got));
            break;
        }
        if (errno != ERANGE)
            return statusOf(errno);
    }
    constexpr std::string_view kUser = "user.";
    for (std::size_t start = 0; start < all.size();) {
        std::size_t end = all.find('\0', start);
        if (end == std::string::npos)
            end = all.size();
        std::string_view name(all.data() + start, end - start);
        if (name.starts_with(kUser)) {
            names += name.substr(kUser.size());
            names += '\0';
        }
        start = end + 1;
    }
    return StreamStatus::Ok;
}
