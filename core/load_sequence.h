#pragma once

#include "contracts/editor_state.h"
#include "contracts/shared_state.h"

// Fills the description box from the stores in their order of precedence, names the
// source in the status label and opens the window for editing: icon, target box,
// caption, buttons, focus and the 1000 ms timer. Writes nothing to any store.
// The target must exist (checkTargetExists() said Exists).
void loadDescription(SharedState& state, EditorState& editor);
