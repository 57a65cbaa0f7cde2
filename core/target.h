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

// Resolution of a command-line argument text: one enclosing quote removed at each end,
// a relative path joined to the current folder and normalised lexically ("." and ".."
// resolved, repeated separators folded, a trailing separator kept), then the checks
// of acceptTarget(). Sets the target path fields.
[[nodiscard]] TargetResult resolveTarget(std::string_view argumentText, SharedState& state,
                                         Prompter& prompter);

// The checks for a full path, as the picker hands it over (no quote removal): line
// breaks, the 243-character limit, the root folder, the failsafe folder and the
// ".DESCRIPTION" suffix. Sets targetFileFullPathname and targetFile.
[[nodiscard]] TargetResult acceptTarget(std::string path, SharedState& state, Prompter& prompter);

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
