#pragma once

#include <cstdint>
#include <string>
#include <system_error>

// The last-write time of a file in whole seconds since 1970 UTC (the fraction of a
// second is dropped, never rounded).
[[nodiscard]] std::error_code getLastWriteTime(const std::string& path, std::int64_t& seconds);

// Sets only the last-write time; the access time and the mode bits are left alone, so
// a read-only file stays read-only.
[[nodiscard]] std::error_code setLastWriteTime(const std::string& path, std::int64_t seconds);
