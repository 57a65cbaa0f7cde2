#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"
#include "platform/folder_lock.h"
#include "platform/regular_file.h"
#include "stores/descript_ion_format.h"

// The per-folder description file "descript.ion" of 4DOS/4NT, Total Commander, Double
// Commander and Far: one entry per item, `NAME DESCRIPTION`, NAME in double quotes when
// it holds a blank. The file's name is matched without letter case. The program never
// creates one; where one exists, a save keeps the target's entry in it.
// The form of its entries is in descript_ion_format.h.

// The folder's description file ("descript.ion" whatever its letter case; the
// lower-case name first where several exist); "" when there is none. `folder` ends in "/".
[[nodiscard]] std::string descriptIonFile(const std::string& folder);

// The target's description from the description file of its folder; nullopt when
// there is no file, no entry, or the file cannot be read.
[[nodiscard]] std::optional<std::string> readDescriptIon(const TargetPaths& target);

// Every entry of a description file (as descriptIonEntries()); nullopt when `file` is ""
// or cannot be read.
[[nodiscard]] std::optional<std::unordered_map<std::string, std::string>> readDescriptIonEntries(
    const std::string& file);

// The bytes of a description file, read through `opened` (see RegularFile): a link or
// anything but a regular file is an error, and so is a file larger than these files ever
// are. A replacement opened with `opened` takes its mode and owner from what was read.
[[nodiscard]] std::error_code readDescriptIonBytes(const std::string& file, RegularFile& opened,
                                                   std::string& bytes);

// Where the target's folder has a description file, replaces the target's entry with
// state.targetFileDesc, or removes it while removeTargetFileDescFlag is 1; a file left
// without entries is deleted. The file is replaced atomically under a lock on the
// folder (the one the folder index takes), keeping its mode. On failure, or when the
// lock is not had within `lockTimeout`, shows "Error: Problem while updating
// 'descript.ion' file." and returns Error; the old file is then left as it was.
[[nodiscard]] WriteResult updateDescriptIon(
    const SharedState& state, Prompter& prompter,
    std::chrono::milliseconds lockTimeout = kFolderLockTimeout);
