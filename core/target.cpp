#include "core/target.h"

#include <filesystem>

#include "core/paths.h"
#include "platform/code_page.h"
#include "platform/environment.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"

namespace {

constexpr std::size_t kMaxPathCharacters = 243;
constexpr std::string_view kExportSuffix = ".DESCRIPTION";

std::string_view withoutEnclosingQuotes(std::string_view text) {
    // One quote at each end, each on its own: a path quoted at one end only loses
    // that quote and nothing else.
    if (text.starts_with('"'))
        text.remove_prefix(1);
    if (text.ends_with('"'))
        text.remove_suffix(1);
    return text;
}

bool beginsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    return upperCase(text).starts_with(upperCase(prefix));
}

// The path with links followed as far as it exists; the lexical form when it cannot be
// resolved.
std::string resolvedPath(const std::string& path) {
    std::error_code ec;
    std::string resolved = std::filesystem::weakly_canonical(path, ec).string();
    if (ec || resolved.empty())
        return lexicallyNormal(path);
    return path.ends_with('/') ? withTrailingSeparator(resolved) : resolved;
}

// Whether the path lies in the failsafe folder, however either is spelled: with "//",
// "." or "..", or through a link. The database itself must never become a target, or
// a save would write a record for it into itself.
bool insideFailsafeFolder(const std::string& path, const std::string& failsafeDBpath,
                          PathResolver& resolver) {
    if (failsafeDBpath.empty())
        return false;
    if (failsafeDBpath.ends_with('/'))
        return resolver.inside(path, failsafeDBpath);
    return resolver.inside(path, withTrailingSeparator(failsafeDBpath));
}

bool insideAsWritten(const std::string& path, const std::string& folder) {
    return beginsWithIgnoringCase(lexicallyNormal(path), lexicallyNormal(folder));
}

// A name that resolves where its folder does, joined to it: not "." or "..", not empty.
bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != "..";
}

// A plain name of a folder's entry, as readdir gives it, after an absolute folder.
bool isEntryOfFolder(const std::string& path) {
    return path.starts_with('/') && isPlainName(lastComponent(path));
}

// The number of bytes that the ".DESCRIPTION" suffix takes at the end of the path, in
// any letter case; 0 when the path does not end in it.
std::size_t exportSuffixBytes(std::string_view path) {
    // Only "n" upper-cases to "N": any other last byte cannot end the suffix.
    if (!path.ends_with('n') && !path.ends_with('N'))
        return 0;
    std::size_t count = characterCount(path);
    if (count < kExportSuffix.size())
        return 0;
    std::string_view tail = charactersFrom(path, count - kExportSuffix.size());
    return upperCase(tail) == kExportSuffix ? tail.size() : 0;
}

TargetResult refuse(Prompter& prompter, std::string_view text) {
    showError(prompter, text);
    return TargetResult::EndProgram;
}

// The exported file of a target that is gone, each line followed by CR LF.
std::string readExportedFile(const std::string& path) {
    std::string text;
    LineReader reader(path);
    std::string line;
    while (reader.next(line))
        text += decodeFileText(line) + "\r\n";
    return text;
}

}  // namespace

std::string argumentText(int argc, const char* const* argv) {
    std::string text;
    for (int i = 1; i < argc; ++i) {
        if (i > 1)
            text += ' ';
        text += argv[i];
    }
    return text;
}

TargetResult resolveTarget(std::string_view argumentText, SharedState& state, Prompter& prompter) {
    return resolvePath(withoutEnclosingQuotes(argumentText), state, prompter);
}

TargetResult resolvePath(std::string_view path, SharedState& state, Prompter& prompter) {
    std::string full =
        path.starts_with('/') ? std::string(path) : currentFolder() + std::string(path);
    return acceptTarget(lexicallyNormal(full), state, prompter);
}

std::string PathResolver::resolved(const std::string& path) {
    if (!isEntryOfFolder(path) || entryIsLink(path))
        return resolvedPath(path);
    return resolvedIn(m_parent, std::string(folderOf(path))) + std::string(lastComponent(path));
}

// A missing entry resolves under its folder too; a link, or an entry that cannot be
// looked at, takes the whole walk.
bool PathResolver::entryIsLink(const std::string& path) {
    if (path == m_knownEntry) {
        m_knownEntry.clear();
        return m_knownIsLink;
    }
    std::error_code ec;
    const auto type = std::filesystem::symlink_status(path, ec).type();
    return type == std::filesystem::file_type::symlink ||
           (ec && type != std::filesystem::file_type::not_found);
}

bool PathResolver::inside(const std::string& path, const std::string& folder) {
    if (!isEntryOfFolder(path))
        return insideAsWritten(path, folder) ||
               beginsWithIgnoringCase(resolvedPath(path), resolvedFolder(folder));
    // `folder` ends in "/", which no name holds: an entry lies in it exactly when the
    // folder the entry stands in does, unless the entry is a link that leads elsewhere.
    const Verdict& verdict = verdictOf(folderOf(path), folder);
    if (verdict.asWritten)
        return true;
    if (!entryIsLink(path))
        return verdict.resolved;
    return beginsWithIgnoringCase(resolvedPath(path), resolvedFolder(folder));
}

const PathResolver::Verdict& PathResolver::verdictOf(std::string_view folder,
                                                     const std::string& container) {
    if (!m_verdict.known || m_verdict.folder != folder || m_verdict.container != container) {
        m_verdict.folder = folder;
        m_verdict.container = container;
        m_verdict.asWritten = insideAsWritten(m_verdict.folder, container);
        m_verdict.resolved = beginsWithIgnoringCase(resolvedIn(m_parent, m_verdict.folder),
                                                    resolvedFolder(container));
        m_verdict.known = true;
    }
    return m_verdict;
}

void PathResolver::knowEntry(const std::string& path, bool isLink) {
    m_knownEntry = path;
    m_knownIsLink = isLink;
}

const std::string& PathResolver::resolvedFolder(const std::string& folder) {
    return resolvedIn(m_folder, folder);
}

const std::string& PathResolver::resolvedIn(Resolved& slot, const std::string& path) {
    if (!slot.known || slot.path != path) {
        slot.path = path;
        slot.resolved = resolvedPath(path);
        slot.known = true;
    }
    return slot.resolved;
}

TargetResult acceptTarget(std::string path, SharedState& state, Prompter& prompter) {
    PathResolver resolver;
    return acceptTarget(std::move(path), state, prompter, resolver);
}

TargetResult acceptTarget(std::string path, SharedState& state, Prompter& prompter,
                          PathResolver& resolver) {
    // A line break in the name would split every line-based store's entry in two.
    if (path.find('\r') != std::string::npos || path.find('\n') != std::string::npos)
        return refuse(prompter,
                      "You cannot create descriptions for files or folders whose name contains "
                      "a line break.");
    if (characterCount(path) > kMaxPathCharacters)
        return refuse(prompter,
                      "Error: Target file/folder full pathname exceeds 243 characters.  "
                      "Aborting...\r\nTarget: " +
                          path);
    if (lastComponent(path).empty())
        return refuse(prompter, "You cannot create descriptions for the root folder.");
    if (insideFailsafeFolder(path, state.data.failsafeDBpath, resolver))
        return refuse(prompter, "Don't do that.");

    // Opening an exported description file edits the description of its owner.
    path.resize(path.size() - exportSuffixBytes(path));
    state.target.targetFile = std::string(lastComponent(path));
    state.target.targetFileFullPathname = std::move(path);
    return TargetResult::Accepted;
}

ExistenceResult checkTargetExists(SharedState& state, Prompter& prompter,
                                  std::string& readingText) {
    const std::string& path = state.target.targetFileFullPathname;
    EntryKind kind = lookupEntry(path).kind;
    if (kind == EntryKind::Error) {
        showError(prompter, "You cannot create descriptions for the root folder or for a share.");
        return ExistenceResult::EndProgram;
    }
    if (kind == EntryKind::Missing) {
        showError(prompter, "Error: file not found.\r\n\"" + path + "\"");
        std::string exported = path + ".description";
        if (!fileExists(exported))
            return ExistenceResult::EndProgram;
        readingText = readExportedFile(exported);
        return ExistenceResult::ReadingState;
    }
    state.target.indexFilePath = std::string(folderOf(path));
    state.target.indexFile = state.target.indexFilePath + "00_index.txt";
    state.targetFileDesc.clear();
    return ExistenceResult::Exists;
}
