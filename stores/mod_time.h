#pragma once

#include <cstdint>
#include <string>

// Keeps a file's last-write time across a write to its named streams: the stream
// writer reads the time before it writes and sets it back afterwards.
//
// Times are whole seconds since 1970 UTC. The fraction of a second is dropped when a
// time is read (truncated, never rounded), so a time set back is the old one to the
// second. Nothing goes through local time, which would shift a time that falls in
// the repeated hour of a daylight-saving change.
namespace modTime {

// The last-write time of `path`; false, with `lastWrite` untouched, when it cannot
// be read.
[[nodiscard]] bool getFileTimes(const std::string& path, std::int64_t& lastWrite);

// Sets only the last-write time. The access time and the mode bits stay as they are
// (the owner may set the time of a read-only file). False when the time was not set.
[[nodiscard]] bool setFileTimes(const std::string& path, std::int64_t lastWrite);

}  // namespace modTime
