#include "picker/path_entry.h"

#include <filesystem>

#include "platform/lookup.h"

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kAllFiles = "*.*";

std::string trimBlanks(std::string_view text) {
    size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    size_t last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}

bool isPattern(const std::string& text) {
    return text.find_first_of("*?") != std::string::npos;
}

// Relative text is read from the folder shown; ".." stays in it for the caller's rule.
std::string absoluteFrom(const std::string& folder, const std::string& text) {
    if (text.starts_with('/'))
        return text;
    return folder.ends_with('/') ? folder + text : folder + "/" + text;
}

// The folder part of a path, up to and including its last "/".
std::string parentPart(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

void enterPlainPath(const std::string& typed, PathEntryLists& lists) {
    std::string path = absoluteFrom(lists.currentFolder(), typed);
    // The parent first, so that a file path, which is no folder, still lands in its folder.
    lists.setFolder(parentPart(path));
    lists.showFilesOfCurrentFolder();
    lists.setFolder(path);
    lists.showFilesOfCurrentFolder();
    std::string found =
        firstOrdinaryFile(absoluteFrom(lists.currentFolder(), lists.selectedFile()));
    if (!found.empty() && typed.find("..") == std::string::npos)
        lists.selectFile(path);
}

std::string enterPattern(const std::string& typed, PathEntryLists& lists) {
    size_t slash = typed.rfind('/');
    if (slash != std::string::npos) {
        // "/*.txt" has an empty folder part: the root.
        std::string folder = slash == 0 ? "/" : typed.substr(0, slash);
        folder = absoluteFrom(lists.currentFolder(), folder);
        if (fileOrFolderExists(folder) && lists.setFolder(folder))
            lists.showFilesOfCurrentFolder();
    }
    lists.setPattern(typed.substr(slash == std::string::npos ? 0 : slash + 1));
    return lists.pattern();
}

}  // namespace

std::string enterPath(std::string_view typed, PathEntryLists& lists) {
    // Drive letters ("D:") name nothing on this host; a drive is reached by its path.
    std::string text = trimBlanks(typed);
    if (isPattern(text))
        return enterPattern(text, lists);
    if (!text.empty())
        enterPlainPath(text, lists);
    lists.setPattern(std::string(kAllFiles));
    return lists.pattern();
}

std::string firstOrdinaryFile(const std::string& path) {
    if (!path.ends_with('/'))
        return lookupEntry(path).kind == EntryKind::File ? fs::path(path).filename().string()
                                                         : std::string();
    std::error_code ec;
    for (fs::directory_iterator it(path, ec); !ec && it != fs::directory_iterator();
         it.increment(ec)) {
        std::error_code statError;
        if (fs::is_regular_file(it->status(statError)))
            return it->path().filename().string();
    }
    return {};
}
