#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contracts/prompter.h"

// Many saves' entries in one folder's description file "descript.ion" (veskor-cli
// import): the file ends up as updateDescriptIon() of each save in turn would leave it,
// written once under the folder's lock (deleted where a save would leave it empty).

// One save's part: the target's name in the folder and its description (CR LF breaks),
// or nullopt for a deletion.
struct DescriptIonChange {
    std::string targetFile;
    std::optional<std::string> description;
};

// Applies the changes in their order where the folder (ending in "/") has a description
// file; nothing happens where it has none. For each change, whether it is stored: a
// change that would alter a read-only file, or whose write fails, is not, and the file's
// error message has then been shown once.
[[nodiscard]] std::vector<bool> updateDescriptIonBatch(
    const std::string& folder, const std::vector<DescriptIonChange>& changes, Prompter& prompter);
