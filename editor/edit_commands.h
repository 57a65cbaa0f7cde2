#pragma once

#include <QKeyEvent>
#include <cstddef>
#include <string>
#include <string_view>

#include "contracts/editor_state.h"
#include "contracts/prompter.h"
#include "contracts/shared_state.h"
#include "core/save_sequence.h"
#include "platform/code_page.h"

// The editor's commands on the description box and around it: find and replace, the
// character counter, the keys of the box, the Cancel question and the delete icon.
// They work on the box through EditorState, so positions count characters of the
// CR LF text; the window only gathers the keys and shows what comes out.

inline constexpr std::size_t kMaxDescriptionChars = 30000;

// The counter label: "Description is empty." or the characters still free, such as
// "29995 characters remaining." for a text of five characters.
std::string counterText(std::string_view text);

// What a key that goes down in the description box asks for, besides the box's own
// handling of it. Ctrl counts whatever Shift and Alt do; F3 finds with or without it.
enum class BoxCommand { None, Copy, Paste, SelectAll, Find, Replace };
BoxCommand boxCommandFor(int key, Qt::KeyboardModifiers modifiers);

// The first match of `needle` in `text` at or after character `from`, ignoring letter
// case; npos when there is none.
std::size_t findIgnoringCase(std::string_view text, std::string_view needle, std::size_t from);

// Find: asks for the search text (proposing the current selection), then selects each
// match in turn while the user answers Yes to "Continue searching?"; "Done." at the end.
void findCommand(EditorState& editor, std::string_view selection, Prompter& prompter);

// Replace: asks for the search and the replacement text, then offers each match in
// turn. Cancel at a match ends at once, keeping what was replaced, without "Done.".
void replaceCommand(EditorState& editor, std::string_view selection, Prompter& prompter);

// Cancel (button, Esc, the window's close box): asks to save a modified description.
// True when the program is to end; false when the user chose to keep editing.
[[nodiscard]] bool cancelEndsProgram(SharedState& state, EditorState& editor, Prompter& prompter);

// The delete icon: saves an empty description, which asks whether to delete it. When
// the save comes back to editing, the text is put back.
[[nodiscard]] SaveOutcome deleteDescription(SharedState& state, EditorState& editor,
                                            Prompter& prompter);

// True when a save outcome ends the program.
bool endsProgram(SaveOutcome outcome);
