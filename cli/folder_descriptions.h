#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/batch_reader.h"
#include "cli/session.h"

// The description of one item at a time, as a file manager asks for it: exactly what
// `ls` shows for the item, read through the listings' reader. A folder's index, its
// descript.ion and its names are read once, and the failsafe database is scanned once,
// for every item asked about; each is read again only after it changed (another
// modification time, size or file). Safe to call from any thread; calls take turns.

struct ItemDescription {
    std::string text;    // LF breaks, as `get` prints it, without the final one; "" for none
    std::string status;  // "Loaded from NTFS"...; "" when no store answered
};

// What tells that a file changed: its identity, size and modification time.
struct FileSignature {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t modified = 0;  // nanoseconds

    static FileSignature of(const std::string& path);
    bool operator==(const FileSignature&) const = default;
};

class FolderDescriptions {
public:
    // With `mayEnterFolders`, items are read by names relative to their folder, which
    // becomes the current folder: only for one thread that owns its current folder
    // (ownCurrentFolder()), which then makes every call.
    explicit FolderDescriptions(DataPaths data, bool mayEnterFolders = false);

    // The item at `path`, an absolute path without a trailing "/". An exported
    // description file, a name the editor refuses or an item that cannot be read has
    // none.
    ItemDescription describe(const std::string& path);

    // The same for many items at once, in their order; each folder's shared files are
    // checked for changes once for them all.
    std::vector<ItemDescription> describe(const std::vector<std::string>& paths);

    // Lists the folder and reads its shared files ahead of its items, which are then only
    // checked for changes. `folder` is absolute, with or without a trailing "/".
    void prepare(const std::string& folder);

    // Up to `count` entries of the folder from the `first`, in the listing's order, each
    // with its description. `folder` is absolute, with or without a trailing "/".
    std::vector<std::pair<std::string, ItemDescription>> describeFolder(const std::string& folder,
                                                                        std::size_t first,
                                                                        std::size_t count);

    // Folders whose shared files are kept at most; the least recently asked goes first.
    static constexpr std::size_t kFoldersKept = 16;

private:
    // One folder's reader and what its shared files looked like when it was filled.
    struct Folder {
        FileSignature folder, index, descriptIon;
        std::string descriptIonPath;  // "" when the folder had none
        // Its entries as the listing saw them, in the listing's order, which is mostly
        // the order they are asked about in: the next one is tried before any lookup.
        std::vector<FolderItem> items;
        std::size_t next = 0;
        // Each name's place among the items, made when one is asked about out of turn.
        std::unordered_map<std::string_view, std::size_t> places;

        const FolderItem* listed(std::string_view name);
        std::unique_ptr<BatchReader> reader;
        std::uint64_t lastUse = 0;
    };

    Folder& readerFor(const std::string& folder);
    void fill(Folder& folder, const std::string& path, const FileSignature& now);
    void describeRun(Folder& folder, const std::vector<std::string>& paths, std::size_t begin,
                     std::size_t end, std::vector<ItemDescription>& items);
    ItemDescription describeIn(Folder& folder, const std::string& path, const FolderItem* listed);
    void refreshFailsafe();
    void dropLeastRecent();

    DataPaths m_data;
    std::string m_failsafeFile;
    bool m_mayEnterFolders;
    std::mutex m_mutex;
    EntryChecker m_checker;
    FileSignature m_failsafeSeen;
    std::unique_ptr<FailsafeScan> m_failsafe;
    std::unordered_map<std::string, Folder> m_folders;
    std::uint64_t m_uses = 0;
};
