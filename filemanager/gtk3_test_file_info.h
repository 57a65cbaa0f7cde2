#pragma once

#include <string>

#include "filemanager/test_file_info_common.h"

// Stand-ins for Caja's, Nemo's and Thunar's file objects: one object has all three
// file-info interfaces. Objects whose path is alive are found by
// caja_file_info_lookup() and nemo_file_info_lookup().

// A new object (full reference) for the local path.
StandInFile* newStandInFile(const std::string& path);

// Emits "changed", as the file managers do after they read the item again.
void emitChanged(StandInFile* file);
