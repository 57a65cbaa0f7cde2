#include "stores/mod_time.h"

#include "platform/file_times.h"

namespace modTime {

bool getFileTimes(const std::string& path, std::int64_t& lastWrite) {
    std::int64_t seconds = 0;
    if (getLastWriteTime(path, seconds))
        return false;
    lastWrite = seconds;
    return true;
}

bool setFileTimes(const std::string& path, std::int64_t lastWrite) {
    return !setLastWriteTime(path, lastWrite);
}

}  // namespace modTime
