#pragma once

#include <optional>
#include <string>
#include <string_view>

// The file manager's comment: the extended attribute "user.xdg.comment" of a file or
// folder, UTF-8 text with LF line breaks, which KDE's file manager shows and edits and
// its search indexes. A save keeps it equal to the description; it never fails a save
// and never shows a message, and it is never left holding an older description.

// The comment with CR LF line breaks; nullopt when there is none, it is empty, or it
// cannot be read. Bytes that are not UTF-8 read as Windows-1252.
[[nodiscard]] std::optional<std::string> readXdgComment(const std::string& target);

// The comment that the attribute's bytes hold, as readXdgComment() reads it.
[[nodiscard]] std::optional<std::string> commentText(std::string_view bytes);

// The attribute's name after "user.".
inline constexpr std::string_view kXdgCommentStream = "xdg.comment";

// Sets the comment to `description` (CR LF breaks written as LF, breaks at its end
// dropped); a description with nothing left removes the comment. When the new value
// cannot be written (a volume without attributes, a value too large for the volume,
// someone else's file), the old comment is removed instead, as far as that is possible.
// An attribute write leaves the file's last-write time alone.
void updateXdgComment(const std::string& target, std::string_view description);

// True when a comment says something else than the description, line breaks and breaks
// at the end aside: the user edited it in the file manager since the last save.
[[nodiscard]] bool commentDiffers(std::string_view description, std::string_view comment);
