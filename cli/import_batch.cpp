#include "cli/import_batch.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "platform/files.h"
#include "platform/folder_lock.h"
#include "stores/descript_ion_batch.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_batch.h"
#include "stores/index_batch.h"

namespace {

bool isLive(const BatchedSave& save) {
    return !save.outcome.has_value();
}

std::optional<std::string> descriptionOf(const SharedState& state) {
    if (state.removeTargetFileDescFlag == 1)
        return std::nullopt;
    return state.targetFileDesc;
}

void returnToEditing(BatchedSave& save) {
    save.outcome = SaveOutcome::ReturnedToEditing;
}

void updateDatabase(std::vector<BatchedSave>& saves, Prompter& prompter) {
    std::vector<FailsafeChange> changes;
    for (const BatchedSave& save : saves) {
        if (isLive(save))
            changes.push_back(
                {save.state.target.targetFileFullPathname, descriptionOf(save.state)});
    }
    if (changes.empty() || updateFailsafeDBBatch(saves.front().state.data.failsafeDBfile, changes,
                                                 prompter) == WriteResult::Ok)
        return;
    for (BatchedSave& save : saves) {
        if (isLive(save))
            returnToEditing(save);
    }
}

// The live saves of one folder, in their order.
using FolderSaves = std::vector<BatchedSave*>;

void dropFinished(FolderSaves& folder) {
    std::erase_if(folder, [](const BatchedSave* save) { return !isLive(*save); });
}

void updateIndex(FolderSaves& folder, const std::string& path, Prompter& prompter) {
    std::vector<IndexChange> changes;
    for (const BatchedSave* save : folder)
        changes.push_back({save->state.target.targetFile, descriptionOf(save->state)});
    if (update00IndexFileBatch(path, changes, prompter) == WriteResult::Error) {
        for (BatchedSave* save : folder)
            returnToEditing(*save);
    }
}

void updateDescriptIonFile(FolderSaves& folder, const std::string& path, Prompter& prompter) {
    std::vector<DescriptIonChange> changes;
    for (const BatchedSave* save : folder)
        changes.push_back({save->state.target.targetFile, descriptionOf(save->state)});
    const std::vector<bool> stored = updateDescriptIonBatch(path, changes, prompter);
    for (std::size_t n = 0; n < folder.size(); ++n) {
        if (!stored[n])
            returnToEditing(*folder[n]);
    }
}

// The stores after the database, for the saves of one folder: each save's exported
// file, the folder's shared files once, then each save's streams.
void saveFolder(FolderSaves folder, Prompter& prompter) {
    const std::string path = folder.front()->state.target.indexFilePath;
    for (BatchedSave* save : folder) {
        if (updateExpDesc(save->state, save->editor.exportChecked(), prompter) ==
            WriteResult::Error)
            returnToEditing(*save);
    }
    dropFinished(folder);
    if (!folder.empty() && isOn(folder.front()->state.options.optionsCreate00index))
        updateIndex(folder, path, prompter);
    dropFinished(folder);
    if (!folder.empty())
        updateDescriptIonFile(folder, path, prompter);
    dropFinished(folder);
    for (BatchedSave* save : folder)
        save->outcome = finishSave(save->state, save->editor, prompter);
}

// The live saves by folder, folders in the order of their first save.
std::vector<FolderSaves> byFolder(std::vector<BatchedSave>& saves) {
    std::vector<FolderSaves> folders;
    std::unordered_map<std::string, std::size_t> positions;
    for (BatchedSave& save : saves) {
        if (!isLive(save))
            continue;
        auto [at, added] = positions.try_emplace(save.state.target.indexFilePath, folders.size());
        if (added)
            folders.emplace_back();
        folders[at->second].push_back(&save);
    }
    return folders;
}

}  // namespace

void saveBatch(std::vector<BatchedSave>& saves, Prompter& prompter) {
    // The batch holds the turns of all its folders until its last store is written, so
    // that no move or copy of one of its targets falls between its stores.
    std::vector<std::string> folders;
    folders.reserve(saves.size());
    for (const BatchedSave& save : saves)
        folders.push_back(folderOfFile(save.state.target.targetFileFullPathname));
    ItemTurns batchTurn;
    if (batchTurn.acquire(folders, kFolderLockTimeout)) {
        showError(prompter, "Error: Problem while updating filesafe DB.");
        for (BatchedSave& save : saves)
            returnToEditing(save);
        return;
    }
    for (BatchedSave& save : saves) {
        ItemTurns held;  // this thread holds the batch's turns: nothing waits here
        if (auto ended = beginSave(save.state, save.editor, prompter, held))
            save.outcome = *ended;
    }
    updateDatabase(saves, prompter);
    for (FolderSaves& folder : byFolder(saves))
        saveFolder(std::move(folder), prompter);
}
