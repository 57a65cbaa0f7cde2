#pragma once

#include <functional>
#include <string>

#include "cli/batch_reader.h"
#include "cli/session.h"

// The entries of folders with their descriptions, as `get` would print them, read in
// batch. Entries come in byte order of their names; the exported description files
// of other entries are store files, not entries, and are left out.

struct ListedEntry {
    std::string path;  // full path
    std::string name;
    bool isFolder = false;  // a folder, not a link to one
    FoundDescription found;
    std::string text;  // as `get` prints it, without the final line break; "" for none
};

// Writes the entry's JSON line to standard output.
void writeJsonLine(Session& session, const ListedEntry& entry);

class Listing {
public:
    Listing(Session& session, const std::string& top);

    // Calls `each` for every entry of the folder (a full path ending in "/"); false when
    // the folder cannot be read.
    bool listFolder(const std::string& folder, const std::function<void(const ListedEntry&)>& each);

    // The same for the folder, then for each of its folders in turn and everything under
    // it; links to folders are not followed. False when any folder could not be read (the
    // others still are). The next few folders are read ahead by `readers` threads while
    // `each` takes the entries of the first; with none (or where no thread can be
    // started) the calling thread reads each folder in turn. The order is the same either
    // way. Entries go out in parts as they are read: memory holds a few hundred entries
    // of each folder read ahead, and the names of each folder being read, which its
    // sort needs.
    bool listTree(const std::string& folder, const std::function<void(const ListedEntry&)>& each,
                  std::size_t readers = defaultReaders());

    // One per processor, four at most.
    static std::size_t defaultReaders();

private:
    Session& m_session;
    FailsafeScan m_failsafe;
};
