#pragma once

#include <string>
#include <string_view>

// The picker's path box: what pressing Enter does with the typed text. The box takes a
// file-name pattern ("*.txt", "/srv/docs/*.doc"), a folder path or a file path. A
// pattern moves the lists to its folder (when that exists) and filters the file list;
// a path moves the lists as far as it can and, when it names an existing file, chooses
// that file at once. No message is shown for anything typed: every step that fails is
// skipped and the next one runs.

// The picker's lists, as the box drives them. The folder and file lists always show
// the same folder.
class PathEntryLists {
public:
    virtual ~PathEntryLists() = default;

    // The folder the lists show ("/" for the root, otherwise no trailing "/").
    [[nodiscard]] virtual std::string currentFolder() const = 0;
    // Moves the lists to `folder` (absolute; "." and ".." allowed). False when it is not
    // a folder or cannot be read; the lists then stay where they were.
    virtual bool setFolder(const std::string& folder) = 0;
    // Re-reads the file list for the current folder; no file is selected afterwards.
    virtual void showFilesOfCurrentFolder() = 0;
    // The selected name in the file list, or empty.
    [[nodiscard]] virtual std::string selectedFile() const = 0;
    // `path` (absolute) as the file list's selection: when it names an existing file,
    // the file is selected and chosen as the target; otherwise nothing changes.
    virtual void selectFile(const std::string& path) = 0;
    virtual void setPattern(const std::string& pattern) = 0;
    [[nodiscard]] virtual std::string pattern() const = 0;
};

// Handles Enter with the box's text `typed`; returns the text the box shows afterwards
// (the file list's pattern), to be selected whole for overtyping. A relative path or
// pattern folder is taken from the folder the lists show when Enter is pressed. A path
// with ".." in it moves the lists but is never chosen.
[[nodiscard]] std::string enterPath(std::string_view typed, PathEntryLists& lists);

// The name of the first regular file that `path` finds: the file itself, or for a
// folder path ending in "/" any regular file in it (dot files count). Empty for none.
[[nodiscard]] std::string firstOrdinaryFile(const std::string& path);
