#pragma once

#include "contracts/editor_state.h"
#include "contracts/prompter.h"
#include "contracts/shared_state.h"

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
