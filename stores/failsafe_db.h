#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

class AtomicFile;
class LineReader;

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

// The description in the target's records, each line followed by CR LF. nullopt when
// there is no record (or the file cannot be read); "" for a record without lines. A
// record without its end line runs to the file's last line, which it leaves out.
[[nodiscard]] std::optional<std::string> readFailsafeDB(const std::string& failsafeDBfile,
                                                        const std::string& targetFileFullPathname);

// Rewrites the database with the target's new record first (none while
// removeTargetFileDescFlag is 1), followed by every old line except the target's old
// record; a record without its end line swallows the rest of the file. Removing the
// last record leaves an empty file. On failure, or when the lock is not had within
// kFolderLockTimeout, shows "Error: Problem while updating filesafe DB." and returns
// Error; the old database is then left as it was.
[[nodiscard]] WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter);

// The same with another wait for the lock than kFolderLockTimeout.
[[nodiscard]] WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter,
                                           std::chrono::milliseconds lockTimeout);

// Whether a line of the database is `marker` (a record's begin or end line): compared as
// bytes, or, for a line that a Windows program wrote in its own code page, decoded first,
// so that its record is still found.
[[nodiscard]] bool isMarker(std::string_view line, std::string_view marker);

// One rewrite of the database file, the way every writer of it goes: under its folder's
// lock, held from before the old file is read until after the rename; the old file read
// through one descriptor (`old` is nullptr where there is none yet); the new file private
// (0600), committed when `write` succeeds. Writers other than updateFailsafeDB() use it.
[[nodiscard]] std::error_code rewriteFailsafeFile(
    const std::string& file, std::chrono::milliseconds lockTimeout,
    const std::function<std::error_code(LineReader* old, AtomicFile& out)>& write);

// ---- Many targets at once (veskor-cli's listings, moves and copies)

// Where the records of the targets under one folder begin, from one streamed pass over
// the database: the byte offsets of their begin lines, found by a hash of the key.
// Holds 16 bytes or so per record under the folder, never a description.
struct FailsafeOffsets {
    std::unordered_multimap<std::size_t, std::uint64_t> byKeyHash;
};

// Scans the database once for the records whose key lies under `folder` (a full path
// ending in "/"). Empty when there is no database or it cannot be read.
[[nodiscard]] FailsafeOffsets scanFailsafeDB(const std::string& failsafeDBfile,
                                             const std::string& folder);

// What readFailsafeDB() returns for the target, read only at the offsets of its
// records. A database changed since the scan may read as no record.
[[nodiscard]] std::optional<std::string> readFailsafeDBAt(
    const std::string& failsafeDBfile, const FailsafeOffsets& offsets,
    const std::string& targetFileFullPathname);

// After `from` became `to` (a file, or a folder with everything in it): every record
// of `from` or under it is given the key of the same path under `to`, in one streamed
// rewrite under the database's lock. Keys match on their bytes, so a name that is not
// UTF-8 moves too; a key written in another code page matches as it reads. Records
// already keyed at or under `to` are dropped, so that `to` reads as `from` did.
// Nothing changes when the two keys are the same. On failure shows the database's
// error message and returns Error; the old database is then left as it was.
struct FailsafeMove {
    std::string from, to;
    // The old records stay: a copy, or another entry still has `from`'s key (its name
    // differs only in letter case), and its records cannot be told from the moved one's.
    bool keepOld = false;
    // Another entry has `to`'s key: its records stay as they are, and none join them.
    bool leaveDestination = false;
};
[[nodiscard]] WriteResult moveFailsafeRecords(const std::string& failsafeDBfile,
                                              const FailsafeMove& move, Prompter& prompter);
