#pragma once

#include <string>
#include <string_view>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// The one target a run edits: taken from the command line (or the picker), refused
// with a message when no description may be made for it, and checked for existence.
// Every refusal shows its message (critical icon, title "Veskor") and yields
// EndProgram; no store is written on any refusal path.

// The argument text: argv[1..] joined by single blanks, taken before any toolkit
// sees argv. Empty when there are no arguments.
[[nodiscard]] std::string argumentText(int argc, const char* const* argv);

enum class TargetResult { Accepted, EndProgram };

// Where paths lead once links are followed, for checking the entries of a folder one
// after another: the folder is resolved once while its entries come in a row, and an
// entry that is no link then costs one look at the entry alone. Holds two folders at
// most; a link changed while it is in use is seen only when another folder comes.
class PathResolver {
public:
    // The path with links followed as far as it exists; its lexical form when it cannot
    // be resolved. A trailing "/" is kept.
    [[nodiscard]] std::string resolved(const std::string& path);
    // Whether the entry at `path` is a link, as its folder's listing said: its next
    // resolution is spared the look at the entry.
    void knowEntry(const std::string& path, bool isLink);
    // The same for a folder that many calls ask about.
    [[nodiscard]] const std::string& resolvedFolder(const std::string& folder);
    // Whether the path lies in `folder` (a path ending in "/"), as written or with links
    // followed, letter case ignored. While the entries of one folder come in a row, each
    // costs no more than the look at whether it is a link.
    [[nodiscard]] bool inside(const std::string& path, const std::string& folder);

private:
    struct Resolved {
        std::string path, resolved;
        bool known = false;
    };
    // Whether one folder lies in another, as written and with links followed.
    struct Verdict {
        std::string folder, container;
        bool known = false, asWritten = false, resolved = false;
    };
    static const std::string& resolvedIn(Resolved& slot, const std::string& path);
    // Whether the entry at `path` is a link, or cannot be looked at; uses up what
    // knowEntry() said of it.
    bool entryIsLink(const std::string& path);
    const Verdict& verdictOf(std::string_view folder, const std::string& container);

    Resolved m_parent, m_folder;
    Verdict m_verdict;
    std::string m_knownEntry;
    bool m_knownIsLink = false;
};

// Resolution of the editor's argument text: one enclosing quote removed at each end
// (the quotes a shell leaves around a whole command line), then resolvePath().
[[nodiscard]] TargetResult resolveTarget(std::string_view argumentText, SharedState& state,
                                         Prompter& prompter);

// Resolution of an exact path, every character of it part of the name (veskor-cli's
// arguments, the paths of JSON lines): a relative path joined to the current folder and
// normalised lexically ("." and ".." resolved, repeated separators folded, a trailing
// separator kept), then the checks of acceptTarget(). Sets the target path fields.
[[nodiscard]] TargetResult resolvePath(std::string_view path, SharedState& state,
                                       Prompter& prompter);

// The checks for a full path, as the picker hands it over (no quote removal): line
// breaks, the 243-character limit, the root folder, the failsafe folder and the
// ".DESCRIPTION" suffix. Sets targetFileFullPathname and targetFile.
[[nodiscard]] TargetResult acceptTarget(std::string path, SharedState& state, Prompter& prompter);
// The same, resolving links through `resolver`, which a caller keeps for many targets.
[[nodiscard]] TargetResult acceptTarget(std::string path, SharedState& state, Prompter& prompter,
                                        PathResolver& resolver);

enum class ExistenceResult {
    Exists,        // indexFilePath and indexFile are set; targetFileDesc is cleared
    ReadingState,  // the target is gone but its exported file exists: show it, never save
    EndProgram,
};

// Checks that the accepted target exists and derives its folder paths. For
// ReadingState, `readingText` receives every line of the exported file, each
// followed by CR LF.
[[nodiscard]] ExistenceResult checkTargetExists(SharedState& state, Prompter& prompter,
                                                std::string& readingText);
