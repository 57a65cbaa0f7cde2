#pragma once

#include <optional>
#include <vector>

#include "contracts/editor_state.h"
#include "contracts/prompter.h"
#include "contracts/shared_state.h"
#include "core/save_sequence.h"

// The saves of many import lines at once: every store ends up as the full save of each
// line in turn would leave it (the line's target and text, as `set --yes` stores them),
// but the failsafe database is rewritten once per batch, and each folder's index and
// descript.ion once per folder of the batch. Every file is still replaced atomically,
// so a run killed at any moment leaves each of them in its old or its new version.

// One line's save: its opened target, and the editor holding its text with Update
// enabled and the export box as the settings want it.
struct BatchedSave {
    SharedState state;
    PlainEditorState editor;
    std::optional<SaveOutcome> outcome;  // set by saveBatch()
};

// Runs the saves in their order. Each store's error message is shown once per file
// that fails, and every save it concerned ends ReturnedToEditing.
void saveBatch(std::vector<BatchedSave>& saves, Prompter& prompter);
