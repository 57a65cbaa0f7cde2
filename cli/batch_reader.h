#pragma once

#include <string>
#include <unordered_set>

#include "core/load_sequence.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"

// The stores read for many entries at once: the failsafe database is scanned once for
// the whole call (keeping only where each record under the top folder begins), each
// folder's index once when the folder is entered, and each entry's stream list once.
// Memory holds one folder's index and names, and a hash and an offset per failsafe
// record under the top folder; it never grows with the number of entries listed.
// Answers exactly what the stores' own readers answer for each entry.
class BatchReader : public DescriptionSources {
public:
    // `top` is the folder of the call, a full path ending in "/".
    BatchReader(const std::string& failsafeDBfile, const std::string& top);

    // Reads the folder's index; `folderNames` holds the names of the folder's entries.
    template <typename Names>
    void enterFolder(const std::string& folder, const Names& folderNames) {
        m_exportedFiles.clear();
        for (const std::string& name : folderNames) {
            if (name.ends_with(kExportedSuffix))
                m_exportedFiles.insert(name);
        }
        readIndex(folder);
    }

    std::string exportedDesc(const TargetPaths& target) override;
    std::string oldStreamDesc(const TargetPaths& target) override;
    std::string summaryDesc(const TargetPaths& target) override;
    std::optional<std::string> indexDesc(const TargetPaths& target) override;
    std::optional<std::string> failsafeDesc(const std::string& failsafeDBfile,
                                            const TargetPaths& target) override;

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

    private:
        StreamStatus list(const std::string& path);

        std::string m_path, m_names;
        StreamStatus m_status = StreamStatus::Missing;
    };

    void readIndex(const std::string& folder);

    std::string m_failsafeDBfile;
    FailsafeOffsets m_failsafe;
    std::unordered_set<std::string> m_exportedFiles;
    bool m_hasIndex = false;
    IndexEntries m_index;
    ListedStreams m_streams;
};
