#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/load_sequence.h"
#include "platform/files.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"

// The stores read for many entries at once: the failsafe database is scanned once for
// the whole call, when an entry first needs it (keeping only where each record under
// the top folder begins), each folder's index once, when an entry of the folder first
// needs it, each folder's descript.ion likewise, and each entry's stream list once.
// Memory holds one folder's index and names, and a hash and an offset per failsafe
// record under the top folder; it never grows with the number of entries listed.
// Answers exactly what the stores' own readers answer for each entry.

// The failsafe database's scan for one call, made once for all the readers of the
// call (in any thread), when the first of them needs it.
class FailsafeScan {
public:
    // `top` is the folder of the call, a full path ending in "/".
    FailsafeScan(std::string failsafeDBfile, std::string top);

    const std::string& file() const { return m_file; }
    const FailsafeOffsets& offsets();

private:
    std::string m_file, m_top;
    std::once_flag m_scanned;
    FailsafeOffsets m_offsets;
};

class BatchReader : public DescriptionSources {
public:
    // With `mayEnterFolders`, the entries of a folder are read by names relative to it,
    // which is then the thread's current folder; without, by their full paths.
    BatchReader(FailsafeScan& failsafe, bool mayEnterFolders);

    // The folder (a full path ending in "/") whose entries come next; `folderNames`
    // holds the names of its entries, of which only those of exported files (ending in
    // ".description") matter. Its index is read when an entry first needs it.
    void enterFolder(const std::string& folder, const std::vector<std::string>& folderNames);

    // Makes that folder current again after another reader of the thread entered its
    // own; what was read of the folder is kept.
    void reenterFolder();

    std::string exportedDesc(const TargetPaths& target) override;
    std::string oldStreamDesc(const TargetPaths& target) override;
    std::string summaryDesc(const TargetPaths& target) override;
    std::optional<std::string> indexDesc(const TargetPaths& target) override;
    std::optional<std::string> failsafeDesc(const std::string& failsafeDBfile,
                                            const TargetPaths& target) override;
    std::optional<std::string> commentDesc(const TargetPaths& target) override;
    std::optional<std::string> descriptIonDesc(const TargetPaths& target) override;

private:
    static constexpr std::string_view kExportedSuffix = ".description";

    // The streams of one entry at a time, listed once; a stream that is not listed is
    // missing without asking the file system again.
    class ListedStreams : public StreamAccess {
    public:
        StreamStatus read(const std::string& path, std::string_view name,
                          std::string& bytes) override;
        StreamStatus exists(const std::string& path, std::string_view name) override;
        StreamStatus replace(const std::string& path, std::string_view name,
                             std::string_view bytes) override;

        explicit ListedStreams(bool mayEnterFolders) : m_mayEnterFolders(mayEnterFolders) {}

        // Entries of this folder are named relative to it, which is then current.
        void enterFolder(const std::string& folder);

    private:
        StreamStatus list(const std::string& path);
        const char* shortPath(const std::string& path) const;

        bool m_mayEnterFolders;
        CurrentFolder m_current;
        std::string m_folder;  // "" when the folder was not entered
        std::string m_path, m_names;
        StreamStatus m_status = StreamStatus::Missing;
    };

    void readIndex();

    FailsafeScan& m_failsafe;
    std::unordered_set<std::string> m_exportedFiles;
    std::string m_folder;
    bool m_indexRead = false;
    bool m_hasIndex = false;
    IndexEntries m_index;
    // The folder's descript.ion, read when an entry first needs it.
    std::optional<std::optional<std::unordered_map<std::string, std::string>>> m_descriptIon;
    ListedStreams m_streams;
};
