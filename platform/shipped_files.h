#pragma once

#include <string>
#include <string_view>

// The files that come with the programs: the help page and the network module. Each
// is looked up from the running program's own folder (`appPath`, ending in "/"), so one
// build runs alike from its build folder, from a folder copied whole (portable use) and
// from an installation under any prefix; no absolute path is built in.
//
// A file is taken from beside the program when it is there (the build folder, or a
// copy that keeps everything in one folder), else from the folder where an
// installation puts it, given relative to the installed program's bin folder. When it
// is in neither place the path beside the program is returned, so that whatever reports
// the missing file names the place a user looks first.
[[nodiscard]] std::string shippedFile(const std::string& appPath, std::string_view installedFolder,
                                      std::string_view name);

[[nodiscard]] std::string helpFilePath(const std::string& appPath);
[[nodiscard]] std::string networkModulePath(const std::string& appPath);
