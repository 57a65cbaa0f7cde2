#include "stores/descript_ion_batch.h"

#include <system_error>

#include "platform/atomic_file.h"
#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/lookup.h"
#include "stores/descript_ion.h"

namespace {

constexpr std::string_view kUpdateFailed = "Error: Problem while updating 'descript.ion' file.";

// The folder's file as the saves change it in memory, written once at the end.
struct OpenFile {
    std::string path, bytes;
    RegularFile opened;  // what was read: the replacement takes its mode and owner
    bool readOnly = false, changed = false;
    std::vector<std::size_t> writers;  // the changes that the final write stores
};

std::error_code openFile(const std::string& folder, OpenFile& file) {
    file = OpenFile{descriptIonFile(folder), "", {}, false, false, {}};
    if (file.path.empty())
        return {};
    file.readOnly = isReadOnlyFile(file.path);
    return readDescriptIonBytes(file.path, file.opened, file.bytes);
}

// One save's step. A save that empties the file deletes it at once; the saves after it
// find the folder's file anew, as they would one after another.
std::error_code applyChange(const std::string& folder, const DescriptIonChange& change,
                            std::size_t n, OpenFile& file) {
    std::optional<std::string> updated =
        withEntry(file.bytes, change.targetFile, change.description);
    if (updated && *updated == file.bytes)
        return {};
    // Root may write anything; a file that its owner may not write fails for root too.
    if (file.readOnly)
        return std::make_error_code(std::errc::permission_denied);
    if (!updated) {
        if (auto ec = removeFile(file.path))
            return ec;
        return openFile(folder, file);
    }
    file.bytes = std::move(*updated);
    file.changed = true;
    file.writers.push_back(n);
    return {};
}

// The new file replaces the old one whole, keeping its permissions; the caller holds the
// folder's lock.
std::error_code replaceUnderLock(const OpenFile& file) {
    AtomicFile out(file.path);
    if (auto ec = out.open(file.opened))
        return ec;
    out.write(file.bytes);
    return out.commit();
}

void markFailed(std::vector<bool>& stored, const std::vector<std::size_t>& changes) {
    for (std::size_t n : changes)
        stored[n] = false;
}

std::vector<bool> applyUnderLock(const std::string& folder,
                                 const std::vector<DescriptIonChange>& changes) {
    std::vector<bool> stored(changes.size(), true);
    OpenFile file;
    if (openFile(folder, file))
        return std::vector<bool>(changes.size(), false);
    for (std::size_t n = 0; n < changes.size() && !file.path.empty(); ++n) {
        if (applyChange(folder, changes[n], n, file))
            stored[n] = false;
    }
    if (file.changed && replaceUnderLock(file))
        markFailed(stored, file.writers);
    return stored;
}

}  // namespace

std::vector<bool> updateDescriptIonBatch(const std::string& folder,
                                         const std::vector<DescriptIonChange>& changes,
                                         Prompter& prompter) {
    std::vector<bool> stored(changes.size(), true);
    if (descriptIonFile(folder).empty())
        return stored;
    FolderLock lock;
    if (lock.acquire(folder, kFolderLockTimeout))
        stored.assign(changes.size(), false);
    else
        stored = applyUnderLock(folder, changes);
    for (bool ok : stored) {
        if (!ok) {
            showError(prompter, kUpdateFailed);
            break;
        }
    }
    return stored;
}
