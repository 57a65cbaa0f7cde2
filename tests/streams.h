#pragma once

#include <optional>
#include <string>

#include "platform/xattr.h"

// A stream's bytes, or nullopt when the entry has no such stream.
inline std::optional<std::string> streamOf(const std::string& path, std::string_view name) {
    std::string bytes;
    return readStream(path, name, bytes) == StreamStatus::Ok ? std::optional(bytes) : std::nullopt;
}
