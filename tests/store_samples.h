#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/temp_dir.h"

// A failsafe database record for the path, as the program writes it; `lines` without
// their last line end.
std::string failsafeRecord(const std::string& path, const std::string& lines);

// Appends the record to the failsafe database file.
void appendFailsafeRecord(const std::string& failsafeFile, const std::string& path,
                          const std::string& lines);

// Writes files into `docs` and describes each in one store: "stream.txt" (two lines) and
// "caf\xE9.txt" (a Latin-1 name) through `describe`, as `set` saves; "exported.txt",
// "indexed.txt", "failsafe.txt" and "ion.txt" by writing that store directly; and
// "none.txt" nowhere. Returns all their names.
using Describe = std::function<void(const std::string& path, const std::string& text)>;
std::vector<std::string> describeOnePerStore(const TempDir& docs, const std::string& failsafeFile,
                                             const Describe& describe);
