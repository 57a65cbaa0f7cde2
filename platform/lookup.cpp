#include "platform/lookup.h"

#include <sys/stat.h>

#include <cerrno>

Entry lookupEntry(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return {EntryKind::Missing, false};
        return {EntryKind::Error, false};
    }
    bool readOnly = (st.st_mode & S_IWUSR) == 0;
    if (S_ISDIR(st.st_mode))
        return {EntryKind::Directory, readOnly};
    if (S_ISREG(st.st_mode))
        return {EntryKind::File, readOnly};
    return {EntryKind::System, readOnly};
}

bool entryExists(const std::string& path) {
    EntryKind kind = lookupEntry(path).kind;
    return kind == EntryKind::File || kind == EntryKind::Directory || kind == EntryKind::System;
}

bool fileExists(const std::string& path) {
    return lookupEntry(path).kind == EntryKind::File;
}

bool fileOrFolderExists(const std::string& path) {
    EntryKind kind = lookupEntry(path).kind;
    return kind == EntryKind::File || kind == EntryKind::Directory;
}

bool IsADirectory(const std::string& path) {
    return lookupEntry(path).kind == EntryKind::Directory;
}
