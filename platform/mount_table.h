#pragma once

#include <optional>
#include <string>
#include <string_view>

// The kernel's table of mounted volumes (/proc/self/mountinfo), as far as the program
// needs it: which volume holds a path, and what file system it is.

struct Mount {
    std::string mountPoint;      // with the table's escapes (\040 for a blank) undone
    std::string fileSystemType;  // "ext4", "ntfs3", "fuseblk", "vfat"...
    std::string source;          // the device or the server's name
};

// The table of the running process; "" when it cannot be read.
[[nodiscard]] std::string readMountTable();

// The mount that holds `path` (an absolute path without "." or ".." components): the
// longest mount point that is `path` or a folder above it; among equal ones the last
// listed, which covers the others. nullopt when no line of the table fits.
[[nodiscard]] std::optional<Mount> mountHolding(std::string_view mountTable, std::string_view path);
