#pragma once

#include <string>

// Directory lookups by the attribute classes that the stores test, on a POSIX host:
// a folder is a directory, a "system" entry is anything that is neither a regular
// file nor a directory (device, FIFO, socket), and "read-only" means the owner has
// no write permission. POSIX has no hidden attribute, so no lookup treats an entry
// as hidden. Links are followed; a dangling link is missing.

enum class EntryKind {
    Missing,    // nothing there (ENOENT, ENOTDIR)
    File,       // a regular file
    Directory,  // a folder
    System,     // exists, but neither a regular file nor a folder
    Error,      // the lookup itself failed (permission, loop, name too long...)
};

struct Entry {
    EntryKind kind = EntryKind::Missing;
    bool readOnly = false;
};

[[nodiscard]] Entry lookupEntry(const std::string& path);

// Files, folders and system entries: what a lookup with every attribute finds.
[[nodiscard]] bool entryExists(const std::string& path);

// A regular file (the lookups of "normal" files, whatever their read-only bit).
[[nodiscard]] bool fileExists(const std::string& path);

// A regular file or a folder, but no system entry.
[[nodiscard]] bool fileOrFolderExists(const std::string& path);

// True when the path names a folder. Callers use it on targets known to exist.
[[nodiscard]] bool IsADirectory(const std::string& path);
