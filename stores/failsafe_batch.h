#pragma once

#include <optional>
#include <string>
#include <vector>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// Many saves' failsafe records in one rewrite of the database (veskor-cli import): the
// file ends up byte for byte as updateFailsafeDB() of each save in turn would leave it,
// and is written once, under the same lock and through the same temporary file.

// One save's part: its target and its description (the record's text, markers already
// blanked), or nullopt for a deletion.
struct FailsafeChange {
    std::string targetFileFullPathname;
    std::optional<std::string> description;
};

// Rewrites the database once for all the changes, in their order. On failure, or when
// the lock is not had within kFolderLockTimeout, shows the database's error message
// once and returns Error; the old database is then left as it was.
[[nodiscard]] WriteResult updateFailsafeDBBatch(const std::string& failsafeDBfile,
                                                const std::vector<FailsafeChange>& changes,
                                                Prompter& prompter);
