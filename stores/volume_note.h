#pragma once

#include <string>
#include <string_view>

// Why a file's own metadata cannot hold a description that Windows would see, told from
// the volume's file system type in the kernel's mount table and from what the volume
// answers when asked, without writing, whether it would take the summary stream:
//   - the volume keeps no extended attributes (FAT, exFAT);
//   - ntfs-3g mounted it with windows_names, which refuses the summary stream's name
//     (it begins with the control character 05);
//   - the ntfs3 driver mounted it, which keeps "user." attributes as NTFS extended
//     attributes, which Windows does not show as the file's comment;
//   - ext4 keeps all of a file's attributes in one block, too small for the summary
//     stream of this description.
// One sentence, or "" when none of these stands in the way. `mountTable` is the text of
// /proc/self/mountinfo.
[[nodiscard]] std::string windowsCommentObstacle(const std::string& target,
                                                 std::string_view description,
                                                 std::string_view mountTable);
