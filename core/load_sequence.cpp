#include "core/load_sequence.h"

#include <optional>

#include "platform/code_page.h"
#include "platform/lookup.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"

namespace {

constexpr std::string_view kPlaceholder = "Enter file description here";

// Text a loader supplied: it fills the box, and a fresh load is not a modification.
void takeText(EditorState& editor, std::string_view text, std::string_view status) {
    editor.setText(text);
    editor.setUpdateBold(false);
    editor.setStatus(status);
}

std::string captionFor(const std::string& targetFile) {
    if (characterCount(targetFile) <= 40)
        return targetFile + " - Veskor";
    std::string_view tail = charactersFrom(targetFile, characterCount(targetFile) - 37);
    return std::string(firstCharacters(targetFile, 3)) + "..." + std::string(tail) + " - Veskor";
}

void loadFromStores(SharedState& state, EditorState& editor) {
    const std::string& target = state.target.targetFileFullPathname;
    if (editor.text().empty()) {
        if (std::string text = readExpDesc(target); !text.empty())
            takeText(editor, text, "Loaded from exported description");
    }
    // The old stream wins over everything, even over an exported file loaded above.
    if (std::string text = readOldNTFSDesc(target); !text.empty())
        takeText(editor, text, "Loaded from NTFS (old)");
    if (editor.text().empty()) {
        if (std::string text = readNTFSDesc(target); !text.empty())
            takeText(editor, text, "Loaded from NTFS");
    }
    if (editor.text().empty() && fileExists(state.target.indexFile)) {
        editor.setText(read00IndexFile(state.target));
        editor.setUpdateBold(false);
        if (!editor.text().empty())
            editor.setStatus("Loaded from '00_Index.txt'");
    }
    state.data.failsafeDBfile = state.data.failsafeDBpath + "ver1.7.dat";
    if (editor.text().empty() && !editor.updateBold() && fileExists(state.data.failsafeDBfile)) {
        // A record that holds no line still names its source.
        if (auto text = readFailsafeDB(state.data.failsafeDBfile, target)) {
            editor.setText(*text);
            editor.setStatus("Loaded from failsafe");
        }
        editor.setUpdateBold(false);
    }
}

}  // namespace

void loadDescription(SharedState& state, EditorState& editor) {
    editor.setCaption("Loading description... - Veskor");
    loadFromStores(state, editor);
    if (editor.text().empty()) {
        editor.setStatus("Description not found");
        editor.setText(kPlaceholder);
        editor.selectText(0, characterCount(kPlaceholder));
        editor.focusText();
        editor.setUpdateBold(false);
    }
    editor.showOpenIcon(IsADirectory(state.target.targetFileFullPathname));
    editor.setTargetBox(state.target.targetFileFullPathname);
    editor.setCaption(captionFor(state.target.targetFile));
    editor.setUpdateEnabled(true);
    editor.setCancelEnabled(true);
    editor.setHelpEnabled(true);
    editor.setOptionsEnabled(true);
    editor.focusText();
    editor.startTimer(1000);
}
