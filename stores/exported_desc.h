#pragma once

#include <string>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// The exported description file: the target's full path with ".description" appended
// (a folder's file lies beside the folder, in its parent). It holds the description's
// lines, each ending in CR LF, and nothing else, so other tools can read it where
// extended attributes do not survive.

// The exported file of a target.
[[nodiscard]] std::string exportedDescPath(const std::string& targetFileFullPathname);

// The file's lines, each followed by CR LF. Empty when the file is missing, is not a
// regular file, cannot be read, is empty or begins with an empty line: such a file
// holds no description.
[[nodiscard]] std::string readExpDesc(const std::string& targetFileFullPathname);

// With the export box ticked and no deletion asked, replaces the file atomically with
// targetFileDesc followed by CR LF. While removeTargetFileDescFlag is 1 it deletes the
// file instead, whatever the box says. Otherwise the file is left alone.
// On failure (a read-only file included) shows "Error: Problem while updating exported
// description file." and returns Error; the old file is then left as it was.
[[nodiscard]] WriteResult updateExpDesc(const SharedState& state, bool exportChecked,
                                        Prompter& prompter);
