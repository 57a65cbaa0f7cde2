#pragma once

#include <string>
#include <string_view>
#include <system_error>

// The hidden folder ".veskor-copy-XXXXXX" beside a copy's destination, in which `cp`
// makes the copy before it is renamed into place. Anyone who may write the
// destination's folder may rename the staging folder or put a link in its place; the
// copy still lands only inside the folder that was created, because everything
// reaches it through the descriptor held open since its creation, never by its name.
//
// The descriptor also holds a lock for the copy's life: a staging folder that nobody
// holds locked was left by a copy that was killed, and the next copy into that
// folder removes it.

class StagingFolder {
public:
    StagingFolder() = default;
    // Removes the folder and whatever is left in it, without following links.
    ~StagingFolder();
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    // Creates the folder, mode 0700, in `folder` (ending in "/"). Fails when what can
    // be opened under the new name is not a folder of ours that only we may enter.
    [[nodiscard]] std::error_code create(const std::string& folder);

    // A path to `name` inside the folder for a child process, which inherits the
    // descriptor: it reaches this folder whatever its name has become.
    [[nodiscard]] std::string childPath(std::string_view name) const;

    // Renames the folder's entry `name` to `to`; EEXIST when `to` exists.
    [[nodiscard]] std::error_code moveOut(std::string_view name, const std::string& to) const;

private:
    int m_fd = -1;
    std::string m_folder, m_name;
};

// A name that StagingFolder gives its folders: listings leave them out.
[[nodiscard]] bool isStagingFolderName(std::string_view name);

// Removes the staging folders in `folder` (ending in "/") that are ours and that no
// copy holds any longer; never follows a link. Folders of other users, and folders
// still held, stay.
void removeAbandonedStagingFolders(const std::string& folder);
