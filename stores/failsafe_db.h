#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// The failsafe database "ver1.7.dat": a copy of every description saved, keyed by the
// target's full path in upper case, newest record first. A record is three parts,
// each on its own lines:
//
//     Veskor failsafe DB 1.7 BEGIN /HOME/ANN/PLAN.TXT
//     the description's lines
//     Veskor failsafe DB 1.7 END /HOME/ANN/PLAN.TXT
//
// Lines outside the target's records pass through a rewrite as the bytes they were.
// The file is streamed, never held whole. Rewrites go through a temporary file beside
// it and hold a lock on the folder, so copies of the program saving at once keep
// every record.

// How long a writer waits for another copy of the program to finish its rewrite.
inline constexpr std::chrono::milliseconds kFailsafeLockTimeout{10000};

// The description in the target's records, each line followed by CR LF. nullopt when
// there is no record (or the file cannot be read); "" for a record without lines. A
// record without its end line runs to the file's last line, which it leaves out.
[[nodiscard]] std::optional<std::string> readFailsafeDB(const std::string& failsafeDBfile,
                                                        const std::string& targetFileFullPathname);

// Rewrites the database with the target's new record first (none while
// removeTargetFileDescFlag is 1), followed by every old line except the target's old
// record; a record without its end line swallows the rest of the file. Removing the
// last record leaves an empty file. On failure, or when the lock is not had within
// kFailsafeLockTimeout, shows "Error: Problem while updating filesafe DB." and returns
// Error; the old database is then left as it was.
[[nodiscard]] WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter);

// The same with another wait for the lock.
[[nodiscard]] WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter,
                                           std::chrono::milliseconds lockTimeout);
