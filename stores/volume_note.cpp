#include "stores/volume_note.h"

#include <sys/statfs.h>

#include <filesystem>

#include "platform/mount_table.h"
#include "platform/xattr.h"
#include "stores/summary_info_codec.h"

namespace {

constexpr std::string_view kSummaryStream =
    "\x05"
    "SummaryInformation";
// What ext4 keeps of a block besides one attribute value: the block's header, the
// entry, the name and the end mark.
constexpr std::uint64_t kExt4BlockOverhead = 72;

// The path as the mount table writes it: absolute, links resolved.
std::string tablePath(const std::string& target) {
    std::error_code ec;
    std::filesystem::path path = std::filesystem::canonical(target, ec);
    return ec ? target : path.string();
}

bool isExt(std::string_view type) {
    return type == "ext2" || type == "ext3" || type == "ext4";
}

std::uint64_t blockSizeOf(const std::string& target) {
    struct statfs fs {};
    return ::statfs(target.c_str(), &fs) == 0 ? static_cast<std::uint64_t>(fs.f_bsize) : 4096;
}

std::string ext4Obstacle(const std::string& target, std::string_view description) {
    const std::uint64_t block = blockSizeOf(target);
    const std::size_t needed = createSummaryInfo(description).size();
    if (needed + kExt4BlockOverhead <= block)
        return "";
    return "ext4 keeps all of a file's extended attributes in one block of " +
           std::to_string(block) + " bytes; the summary stream of this description needs " +
           std::to_string(needed) + " bytes.";
}

}  // namespace

std::string windowsCommentObstacle(const std::string& target, std::string_view description,
                                   std::string_view mountTable) {
    const std::optional<Mount> mount = mountHolding(mountTable, tablePath(target));
    const std::string type = mount ? mount->fileSystemType : "";
    if (type == "ntfs3")
        return "The ntfs3 driver mounted this NTFS volume: it keeps the streams as NTFS "
               "extended attributes, which Windows does not show as the file's comment.";
    switch (probeStreamName(target, kSummaryStream)) {
        case StreamName::NoStreams:
            // A FUSE volume's type names the mechanism, not the file system.
            return "This volume" +
                   (type.empty() || type.starts_with("fuse") ? "" : " (" + type + ")") +
                   " keeps no extended attributes, so the file itself cannot hold a "
                   "description.";
        case StreamName::Refused:
            return "ntfs-3g mounted this volume with windows_names, which refuses stream "
                   "names with control characters; the summary stream's name begins with "
                   "byte 05.";
        case StreamName::Allowed:
        case StreamName::Unknown:
            break;
    }
    return isExt(type) ? ext4Obstacle(target, description) : "";
}
