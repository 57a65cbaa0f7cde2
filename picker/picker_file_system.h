#pragma once

#include <string>
#include <vector>

// What the picker's lists read from the disk: the drives (mounted volumes), the
// entries of one folder, and whether a file can be opened for reading. The window
// holds one of these; tests give it one that fails where they need a failure.

struct FolderListing {
    bool readable = false;             // false: the folder could not be listed at all
    std::vector<std::string> folders;  // names of the sub-folders, sorted
    std::vector<std::string> files;    // names of the regular files, sorted
};

class PickerFileSystem {
public:
    virtual ~PickerFileSystem() = default;

    // The mount points of the mounted volumes that are folders, sorted; always holds "/".
    [[nodiscard]] virtual std::vector<std::string> mountPoints() const;

    // The folder's entries. Names starting with "." are left out, as file managers do;
    // links count as what they point to, and entries that are neither a folder nor a
    // regular file (devices, FIFOs, sockets, dangling links) are left out.
    [[nodiscard]] virtual FolderListing listFolder(const std::string& folder) const;

    // True when the file opens for reading (it is closed again at once).
    [[nodiscard]] virtual bool canReadFile(const std::string& path) const;
};
