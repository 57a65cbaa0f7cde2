#include "stores/descript_ion.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <unordered_map>

#include "platform/atomic_file.h"
#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/lookup.h"
#include "platform/regular_file.h"

namespace {

constexpr std::string_view kFileName = "descript.ion";
// Far Manager and the commanders keep these files small; a larger one is not read.
constexpr std::uintmax_t kMaxFileBytes = 32u << 20;
constexpr std::string_view kUpdateFailed = "Error: Problem while updating 'descript.ion' file.";

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        return lower(x) == lower(y);
    });
}

std::error_code readLimited(const std::string& path, RegularFile& file, std::string& bytes) {
    if (auto ec = file.open(path))
        return ec;
    return readRest(file, bytes, kMaxFileBytes);
}

// The new file replaces the old one whole, with the permissions of the one that was
// read; the caller holds the folder's lock.
std::error_code replaceUnderLock(const RegularFile& old, const std::string& path,
                                 std::string_view bytes) {
    AtomicFile out(path);
    if (auto ec = out.open(old))
        return ec;
    out.write(bytes);
    return out.commit();
}

std::error_code rewriteUnderLock(const SharedState& state, const std::string& file) {
    RegularFile old;
    std::string bytes;
    if (auto ec = readLimited(file, old, bytes))
        return ec;
    std::optional<std::string_view> description;
    if (state.removeTargetFileDescFlag != 1)
        description = state.targetFileDesc;
    std::optional<std::string> updated = withEntry(bytes, state.target.targetFile, description);
    if (updated && *updated == bytes)
        return {};
    // Root may write anything; a file that its owner may not write fails for root too.
    if ((old.status().st_mode & S_IWUSR) == 0)
        return std::make_error_code(std::errc::permission_denied);
    return updated ? replaceUnderLock(old, file, *updated) : removeFile(file);
}

std::error_code rewrite(const SharedState& state, std::chrono::milliseconds lockTimeout) {
    const std::string& folder = state.target.indexFilePath;
    if (descriptIonFile(folder).empty())
        return {};
    // Held from before the file is read until after the rename, as for the folder
    // index, so that two copies of the program keep each other's entries.
    FolderLock lock;
    if (auto ec = lock.acquire(folder, lockTimeout))
        return ec;
    // Another copy may have removed the file meanwhile.
    const std::string file = descriptIonFile(folder);
    return file.empty() ? std::error_code() : rewriteUnderLock(state, file);
}

}  // namespace

std::string descriptIonFile(const std::string& folder) {
    if (fileExists(folder + std::string(kFileName)))
        return folder + std::string(kFileName);
    DIR* dir = ::opendir(folder.c_str());
    if (!dir)
        return "";
    std::string found;
    while (const dirent* entry = ::readdir(dir)) {
        std::string_view name = entry->d_name;
        if (equalsIgnoringAsciiCase(name, kFileName) && (found.empty() || name < found) &&
            fileExists(folder + std::string(name)))
            found = name;
    }
    ::closedir(dir);
    return found.empty() ? "" : folder + found;
}

std::optional<std::string> readDescriptIon(const TargetPaths& target) {
    auto entries = readDescriptIonEntries(descriptIonFile(target.indexFilePath));
    if (!entries)
        return std::nullopt;
    auto entry = entries->find(descriptIonKey(target.targetFile));
    if (entry == entries->end())
        return std::nullopt;
    return std::move(entry->second);
}

std::optional<std::unordered_map<std::string, std::string>> readDescriptIonEntries(
    const std::string& file) {
    RegularFile opened;
    std::string bytes;
    if (file.empty() || readLimited(file, opened, bytes))
        return std::nullopt;
    return descriptIonEntries(bytes);
}

std::error_code readDescriptIonBytes(const std::string& file, RegularFile& opened,
                                     std::string& bytes) {
    return readLimited(file, opened, bytes);
}

WriteResult updateDescriptIon(const SharedState& state, Prompter& prompter,
                              std::chrono::milliseconds lockTimeout) {
    if (rewrite(state, lockTimeout)) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
