#pragma once

#include <string>

#include "filemanager/test_file_info_common.h"

// A stand-in for GNOME Files' own file objects. Objects with a path that is alive are
// found by nautilus_file_info_lookup().
using TestFileInfo = StandInFile;

GType testFileInfoType();

// A new object (full reference) for the local path.
TestFileInfo* newTestFileInfo(const std::string& path);

// Emits the "changed" signal, as GNOME Files does after it read the item again.
void emitChanged(TestFileInfo* info);
