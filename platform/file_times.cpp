#include "platform/file_times.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

std::error_code getLastWriteTime(const std::string& path, std::int64_t& seconds) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0)
        return {errno, std::generic_category()};
    seconds = st.st_mtim.tv_sec;
    return {};
}

std::error_code setLastWriteTime(const std::string& path, std::int64_t seconds) {
    struct timespec times[2]{};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(seconds);
    times[1].tv_nsec = 0;
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
        return {errno, std::generic_category()};
    return {};
}
