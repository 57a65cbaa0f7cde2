#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// Many saves' entries in one folder's index "00_index.txt" in one rewrite (veskor-cli
// import): the file ends up as update00IndexFile() of each save in turn would leave it,
// under the same lock and through the same temporary file. Whether the item of an old
// entry is still in the folder is looked at once, when the rewrite runs.

// One save's part: the target's name in the folder and its description (markers
// blanked, CR LF breaks), or nullopt for a deletion.
struct IndexChange {
    std::string targetFile;
    std::optional<std::string> description;
};

// Rewrites the index of `folder` (ending in "/") once for all the changes, in their
// order; an index left empty is deleted and an older "Index_00.txt" adopted first, as
// by the single save. On failure shows the index's error message once and returns
// Error; the old index is then left as it was.
[[nodiscard]] WriteResult update00IndexFileBatch(const std::string& folder,
                                                 const std::vector<IndexChange>& changes,
                                                 Prompter& prompter);
