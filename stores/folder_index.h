#pragma once

#include <chrono>
#include <string>
#include <unordered_map>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// The folder index "00_index.txt": one entry per item of a folder, in the column
// layout that FTP clients and cataloguing tools read. An entry is a head line and
// the continuation lines after it; continuation lines begin with 13 blanks and
// description text starts in column 14 (columns count characters, not bytes).
//
//     notes.txt    First line            a name under 13 characters, no blank
//                  Second
//     "My File.txt"                      any other name, quoted, alone on its line
//                  First line
//                  Second
//
// Head lines match a name whatever its letter case. Lines are written with CR LF;
// lines of other items are copied through as the bytes they were.

// The target's description gathered from all its entries in the index of its folder,
// each line followed by CR LF. Empty when there is no index, no entry, or the index
// cannot be read.
[[nodiscard]] std::string read00IndexFile(const TargetPaths& target);

// Rewrites the index of the target's folder (through a temporary file) with the
// target's entry first (none while removeTargetFileDescFlag is 1), followed by the
// old lines minus the target's old entries, the entries of items that no longer
// exist (a last line is never dropped for that) and empty lines. An index left empty
// is deleted. An older "Index_00.txt" is first renamed to "00_index.txt" unless that
// exists already. The whole rewrite holds the folder's lock, so saves of different
// items of one folder at once keep every entry. On failure, or when the lock is not
// had within kFolderLockTimeout, shows the index's error message and returns Error;
// the old index is then left as it was and the temporary file is removed.
[[nodiscard]] WriteResult update00IndexFile(const SharedState& state, Prompter& prompter);

// The same with another wait for the lock than kFolderLockTimeout.
[[nodiscard]] WriteResult update00IndexFile(const SharedState& state, Prompter& prompter,
                                            std::chrono::milliseconds lockTimeout);

// ---- Many entries at once (veskor-cli's listings)

// Every name's description in one folder's index, from one pass over the file: for
// each name, upper-cased, exactly what read00IndexFile() returns for it. Names with no
// entry are absent. Empty when the index is missing or cannot be read. Holds as much
// text as the index does, for one folder at a time.
using IndexEntries = std::unordered_map<std::string, std::string>;
[[nodiscard]] IndexEntries read00IndexEntries(const std::string& indexFile);
