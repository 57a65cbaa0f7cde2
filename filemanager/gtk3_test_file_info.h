#pragma once

#include <gio/gio.h>

#include <functional>
#include <map>
#include <string>

// A stand-in for the file managers' own file objects: Caja's, Nemo's and Thunar's
// file-info interfaces over one path, recording the attributes a provider adds and each
// invalidation of its information. Objects whose path is alive are found by
// caja_file_info_lookup() and nemo_file_info_lookup().
struct StandInFile {
    GObject parent;
    GFile* location;
    std::map<std::string, std::string, std::less<>>* attributes;
    int invalidations;
};

// A new object (full reference) for the local path.
StandInFile* newStandInFile(const std::string& path);

// Emits "changed", as the file managers do after they read the item again.
void emitChanged(StandInFile* file);
