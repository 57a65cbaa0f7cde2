#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "contracts/editor_state.h"
#include "contracts/prompter.h"
#include "contracts/shared_state.h"
#include "platform/folder_lock.h"

// The Update command: stores the description box's text in the failsafe database, the
// exported file, the folder index, the folder's descript.ion (where there is one) and
// the target's streams, in that order, stopping at the first store that fails; then in
// the file manager's comment, which never fails the save. The stores are written in
// the turn of the target's folder (ItemTurns), so that a move or copy of the target,
// or another save of it, never falls between them.

enum class SaveOutcome {
    NotRun,               // the Update button was disabled: nothing happened
    ReturnedToEditing,    // a store failed or a question was answered No: keep editing
    Stored,               // the description is stored: end the program
    EndedWithoutStoring,  // end the program; the target is gone, or the user accepted
                          // that the streams could not be written and nothing else would
};

// Every outcome but NotRun and ReturnedToEditing ends the program; the caller does so.
[[nodiscard]] SaveOutcome Command1_Click(SharedState& state, EditorState& editor,
                                         Prompter& prompter);

// ---- The save in parts, for a caller that writes the shared files of many saves at once

// The start of the save: the question before a deletion, the turn of the target's
// folder taken into `turn` (already held when this thread holds it), the check that the
// target is still there, and targetFileDesc set. nullopt when the stores are to be
// written next, while `turn` is kept; otherwise the outcome, after its message.
[[nodiscard]] std::optional<SaveOutcome> beginSave(SharedState& state, EditorState& editor,
                                                   Prompter& prompter, ItemTurns& turn);

// The end of the save, after the file stores: the target's streams, the file manager's
// comment, and the exported file or the question that stands in when the streams fail.
[[nodiscard]] SaveOutcome finishSave(SharedState& state, EditorState& editor, Prompter& prompter);

// The description with the failsafe database's record markers blanked, so that no line
// of it ever reads as one.
[[nodiscard]] std::string withMarkersBlanked(std::string_view text);
