#include "core/load_sequence.h"

#include "platform/code_page.h"
#include "platform/lookup.h"
#include "stores/descript_ion.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"
#include "stores/xdg_comment.h"

namespace {

constexpr std::string_view kPlaceholder = "Enter file description here";

class StoreReaders : public DescriptionSources {
public:
    std::string exportedDesc(const TargetPaths& target) override {
        return readExpDesc(target.targetFileFullPathname);
    }
    std::string oldStreamDesc(const TargetPaths& target) override {
        return readOldNTFSDesc(target.targetFileFullPathname);
    }
    std::string summaryDesc(const TargetPaths& target) override {
        return readNTFSDesc(target.targetFileFullPathname);
    }
    std::optional<std::string> indexDesc(const TargetPaths& target) override {
        if (!fileExists(target.indexFile))
            return std::nullopt;
        return read00IndexFile(target);
    }
    std::optional<std::string> failsafeDesc(const std::string& failsafeDBfile,
                                            const TargetPaths& target) override {
        if (!fileExists(failsafeDBfile))
            return std::nullopt;
        return readFailsafeDB(failsafeDBfile, target.targetFileFullPathname);
    }
    std::optional<std::string> commentDesc(const TargetPaths& target) override {
        return readXdgComment(target.targetFileFullPathname);
    }
    std::optional<std::string> descriptIonDesc(const TargetPaths& target) override {
        return readDescriptIon(target);
    }
};

// The program's own stores; a failsafe record without lines names its source with an
// empty text.
FoundDescription findInOwnStores(const TargetPaths& target, const std::string& failsafeDBfile,
                                 DescriptionSources& sources) {
    FoundDescription found;
    if (std::string text = sources.exportedDesc(target); !text.empty())
        found = {text, "Loaded from exported description"};
    // The old stream wins over everything, even over an exported file found above.
    if (std::string text = sources.oldStreamDesc(target); !text.empty())
        found = {text, "Loaded from NTFS (old)"};
    if (!found.text.empty())
        return found;
    if (std::string text = sources.summaryDesc(target); !text.empty())
        return {text, "Loaded from NTFS"};
    if (auto text = sources.indexDesc(target); text && !text->empty())
        return {*text, "Loaded from '00_Index.txt'"};
    // A record that holds no line still names its source.
    if (auto text = sources.failsafeDesc(failsafeDBfile, target))
        return {*text, "Loaded from failsafe"};
    return found;
}

// What other programs keep, tried only when none of the program's own stores had text:
// the file manager's comment, then the folder's descript.ion.
std::optional<FoundDescription> findInOtherPrograms(const TargetPaths& target,
                                                    DescriptionSources& sources,
                                                    const std::optional<std::string>& comment) {
    if (comment)
        return FoundDescription{*comment, "Loaded from file manager comment"};
    if (auto text = sources.descriptIonDesc(target); text && !text->empty())
        return FoundDescription{*text, "Loaded from descript.ion"};
    return std::nullopt;
}

std::string captionFor(const std::string& targetFile) {
    if (characterCount(targetFile) <= 40)
        return targetFile + " - Veskor";
    std::string_view tail = charactersFrom(targetFile, characterCount(targetFile) - 37);
    return std::string(firstCharacters(targetFile, 3)) + "..." + std::string(tail) + " - Veskor";
}

}  // namespace

DescriptionSources& storeReaders() {
    static StoreReaders readers;
    return readers;
}

FoundDescription findDescription(const TargetPaths& target, const std::string& failsafeDBfile,
                                 DescriptionSources& sources, CommentCheck check) {
    FoundDescription found = findInOwnStores(target, failsafeDBfile, sources);
    if (found.text.empty())
        return findInOtherPrograms(target, sources, sources.commentDesc(target)).value_or(found);
    if (check == CommentCheck::Note) {
        const std::optional<std::string> comment = sources.commentDesc(target);
        found.commentDiffers = comment && commentDiffers(found.text, *comment);
    }
    return found;
}

// Said so that Update overwriting the comment comes as no surprise.
std::string statusLabel(const FoundDescription& found) {
    return found.commentDiffers ? found.status + " - file manager comment differs" : found.status;
}

void loadDescription(SharedState& state, EditorState& editor) {
    editor.setCaption("Loading description... - Veskor");
    state.data.failsafeDBfile = state.data.failsafeDBpath + "ver1.7.dat";
    FoundDescription found =
        findDescription(state.target, state.data.failsafeDBfile, storeReaders());
    // A freshly loaded description is not a modification.
    editor.setText(found.text);
    editor.setUpdateBold(false);
    if (!found.status.empty())
        editor.setStatus(statusLabel(found));
    if (editor.text().empty()) {
        editor.setStatus("Description not found");
        editor.setText(kPlaceholder);
        editor.selectText(0, characterCount(kPlaceholder));
        editor.focusText();
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
