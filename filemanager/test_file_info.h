#pragma once

#include <gio/gio.h>

#include <functional>
#include <map>
#include <string>

// A stand-in for GNOME Files' own file objects: the file-info interface over a path,
// recording the attributes a provider adds and each invalidation of its information.
// Objects with a path that is alive are found by nautilus_file_info_lookup().

struct TestFileInfo {
    GObject parent;
    GFile* location;
    std::map<std::string, std::string, std::less<>>* attributes;
    int invalidations;
};

GType testFileInfoType();

// A new object (full reference) for the local path.
TestFileInfo* newTestFileInfo(const std::string& path);

// Emits the "changed" signal, as GNOME Files does after it read the item again.
void emitChanged(TestFileInfo* info);
