#include "core/save_sequence.h"

#include <algorithm>
#include <cctype>

#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/lookup.h"
#include "stores/descript_ion.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"
#include "stores/xdg_comment.h"

namespace {

constexpr std::string_view kBeginMarker = "Veskor failsafe DB 1.7 BEGIN";
constexpr std::string_view kEndMarker = "Veskor failsafe DB 1.7 END";

// Both markers are ASCII, so comparing ASCII letters without case is enough; bytes of
// other characters never equal a marker byte.
bool equalsIgnoringCase(std::string_view text, std::size_t at, std::string_view word) {
    if (text.size() - at < word.size())
        return false;
    return std::equal(word.begin(), word.end(), text.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, char b) {
                          return std::tolower(static_cast<unsigned char>(a)) ==
                                 std::tolower(static_cast<unsigned char>(b));
                      });
}

std::string blankOut(std::string_view text, std::string_view word) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (equalsIgnoringCase(text, i, word)) {
            out += ' ';
            i += word.size();
        } else {
            out += text[i++];
        }
    }
    return out;
}

SaveOutcome returnToEditing(EditorState& editor) {
    editor.setUpdateCaption("Update [F10]");
    editor.setUpdateEnabled(true);
    editor.setCancelEnabled(true);
    editor.setTextEnabled(true);
    return SaveOutcome::ReturnedToEditing;
}

void enterBusyState(EditorState& editor) {
    editor.setUpdateCaption("Updating...");
    editor.setUpdateEnabled(false);
    editor.setCancelEnabled(false);
    editor.setTextEnabled(false);
}

// The target vanished while the user edited: nothing is stored, but a deletion still
// removes the orphaned exported file.
SaveOutcome targetGone(const SharedState& state, Prompter& prompter) {
    if (state.removeTargetFileDescFlag == 0) {
        showError(prompter, "Error: Target appears to no longer exist.");
    } else {
        const std::string exported = state.target.targetFileFullPathname + ".description";
        if (fileExists(exported))
            (void)removeFile(exported);
    }
    return SaveOutcome::EndedWithoutStoring;
}

bool askToLoseTheDescription(Prompter& prompter) {
    return ask(prompter,
               "WARNING: File description cannot be saved in NTFS.  '00_index.txt' file "
               "creation option is disabled.  Auto-creation of exported description files "
               "option is also disabled.  Continuing will result in the description not "
               "being saved at all (any changes will be lost).  Continue?",
               Buttons::YesNoCancel) == Answer::Yes;
}

}  // namespace

std::string withMarkersBlanked(std::string_view text) {
    return blankOut(blankOut(text, kBeginMarker), kEndMarker);
}

SaveOutcome Command1_Click(SharedState& state, EditorState& editor, Prompter& prompter) {
    if (!editor.updateEnabled())
        return SaveOutcome::NotRun;
    enterBusyState(editor);
    ItemTurns turn;
    if (auto ended = beginSave(state, editor, prompter, turn))
        return *ended;
    if (updateFailsafeDB(state, prompter) == WriteResult::Error)
        return returnToEditing(editor);
    if (updateExpDesc(state, editor.exportChecked(), prompter) == WriteResult::Error)
        return returnToEditing(editor);
    if (isOn(state.options.optionsCreate00index) &&
        update00IndexFile(state, prompter) == WriteResult::Error)
        return returnToEditing(editor);
    if (updateDescriptIon(state, prompter) == WriteResult::Error)
        return returnToEditing(editor);
    return finishSave(state, editor, prompter);
}

std::optional<SaveOutcome> beginSave(SharedState& state, EditorState& editor, Prompter& prompter,
                                     ItemTurns& turn) {
    state.removeTargetFileDescFlag = 0;
    if (editor.text().empty()) {
        if (ask(prompter, "Delete existing description?", Buttons::YesNo) != Answer::Yes)
            return returnToEditing(editor);
        state.removeTargetFileDescFlag = 1;
    }
    // A move or copy of the target, or another save of it, runs before or after this
    // one, never between its stores. One that keeps the turn too long fails the save
    // at its first store.
    if (turn.acquire({folderOfFile(state.target.targetFileFullPathname)}, kFolderLockTimeout)) {
        showError(prompter, "Error: Problem while updating filesafe DB.");
        return returnToEditing(editor);
    }
    if (!entryExists(state.target.targetFileFullPathname))
        return targetGone(state, prompter);
    state.targetFileDesc = withMarkersBlanked(editor.text());
    return std::nullopt;
}

SaveOutcome finishSave(SharedState& state, EditorState& editor, Prompter& prompter) {
    const Options& options = state.options;
    const WriteResult streams = updateNTFSDesc(state, editor);
    // After the summary stream, which keeps the first claim on the file's attribute
    // space; it never fails the save.
    updateXdgComment(state.target.targetFileFullPathname, editor.text());
    if (streams == WriteResult::Ok)
        return SaveOutcome::Stored;

    // The streams could not be written; the exported file stands in when allowed.
    if (isOn(options.optionsCreateExpDescNonNTFS)) {
        if (updateExpDesc(state, editor.exportChecked(), prompter) == WriteResult::Error)
            return returnToEditing(editor);
        return SaveOutcome::Stored;
    }
    if (!isOn(options.optionsCreate00index)) {
        if (askToLoseTheDescription(prompter))
            return SaveOutcome::EndedWithoutStoring;
        return returnToEditing(editor);
    }
    return SaveOutcome::Stored;
}
