#pragma once

#include <optional>
#include <string>

#include "contracts/editor_state.h"
#include "contracts/shared_state.h"

// The description of a target is the text of the first store that holds one, in a fixed
// order of precedence; the old stream wins over the exported file. What other programs
// keep (the file manager's comment, then descript.ion) comes after all of the program's
// own stores. The order lives in
// findDescription() alone: the editor reads the stores one target at a time, veskor-cli
// also through a batch reader that reads each folder's files once for many entries.

// One read per store, as the sequence asks for them. A reader never fails: whatever
// cannot be read reads as no text.
class DescriptionSources {
public:
    virtual ~DescriptionSources() = default;
    // The exported description file's lines, each followed by CR LF; "" when none.
    virtual std::string exportedDesc(const TargetPaths& target) = 0;
    // The old description stream's text, or "".
    virtual std::string oldStreamDesc(const TargetPaths& target) = 0;
    // The summary stream's Comments text, or "".
    virtual std::string summaryDesc(const TargetPaths& target) = 0;
    // The target's entries in its folder's index, each line followed by CR LF; nullopt
    // when the folder has no index.
    virtual std::optional<std::string> indexDesc(const TargetPaths& target) = 0;
    // The target's failsafe records, each line followed by CR LF; nullopt without a
    // database or a record, "" for a record without lines.
    virtual std::optional<std::string> failsafeDesc(const std::string& failsafeDBfile,
                                                    const TargetPaths& target) = 0;
    // The file manager's comment, CR LF breaks; nullopt when there is none. Read too
    // when another store has the text, unless the caller skips the note that it differs.
    virtual std::optional<std::string> commentDesc(const TargetPaths& target) = 0;
    // The target's entry in its folder's descript.ion; nullopt without one.
    virtual std::optional<std::string> descriptIonDesc(const TargetPaths& target) = 0;
};

// The stores read directly, one target at a time.
DescriptionSources& storeReaders();

struct FoundDescription {
    std::string text;    // CR LF breaks; "" when nothing was found
    std::string status;  // "Loaded from NTFS"...; "" when no store answered
    // The file manager's comment says something else than the text found in another
    // store: someone edited it there since the last save.
    bool commentDiffers = false;
};

// The status label's text: the status, and a note when the comment differs, short
// enough for the label's two lines.
[[nodiscard]] std::string statusLabel(const FoundDescription& found);

// Whether the file manager's comment is read when another store holds the text, to
// note that it differs: the editor shows the note; a listing, which never does, spares
// the read.
enum class CommentCheck { Note, Skip };

// The text and the status label that loading shows for the target. A failsafe record
// without lines names its source with an empty text.
[[nodiscard]] FoundDescription findDescription(const TargetPaths& target,
                                               const std::string& failsafeDBfile,
                                               DescriptionSources& sources,
                                               CommentCheck check = CommentCheck::Note);

// Fills the description box from the stores in their order of precedence, names the
// source in the status label and opens the window for editing: icon, target box,
// caption, buttons, focus and the 1000 ms timer. Writes nothing to any store.
// The target must exist (checkTargetExists() said Exists); the box starts empty.
void loadDescription(SharedState& state, EditorState& editor);
