#pragma once

#include <string>
#include <string_view>

#include "contracts/editor_state.h"
#include "contracts/shared_state.h"
#include "platform/xattr.h"

// The description in the target's own metadata: three named streams of the target
// (extended attributes "user." + name; on an NTFS volume mounted by ntfs-3g, the
// volume's real alternate data streams, which the file manager on Windows shows):
//   "\x05SummaryInformation"                   the property set whose Comments is the
//                                              description (stores/summary_info_codec)
//   "{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}"   a marker, always empty
//   "description"                              an older plain-text home, still read,
//                                              emptied by every save
//
// Readers never fail: a missing stream, a volume without streams or any read error
// reads as "". The writer never shows a message.
//
// A Samba server with vfs_streams_xattr (the usual NAS set-up) keeps the stream NAME that
// a Windows client writes as "user.DosStream." + NAME + ":$DATA", its bytes followed by
// one zero byte, and marks every file it touched with "user.DOSATTRIB". A stream missing
// in our naming is read in Samba's; on a file that carries Samba's marks, a save writes
// the summary and marker streams in both namings, so that the Windows PC shows the
// description as the file's comment.

// The named-stream operations the store uses, so that tests can make them fail.
class StreamAccess {
public:
    virtual ~StreamAccess() = default;
    virtual StreamStatus read(const std::string& path, std::string_view name,
                              std::string& bytes) = 0;
    virtual StreamStatus exists(const std::string& path, std::string_view name) = 0;
    virtual StreamStatus replace(const std::string& path, std::string_view name,
                                 std::string_view bytes) = 0;
    virtual StreamStatus remove(const std::string&, std::string_view) {
        return StreamStatus::NotSupported;
    }
    // The names of the entry's streams, each followed by a NUL; none where the access
    // cannot list them.
    virtual StreamStatus streamNames(const std::string&, std::string& names) {
        names.clear();
        return StreamStatus::NotSupported;
    }
};

// The host's streams (platform/xattr.h).
StreamAccess& hostStreams();

// The Comments text of the summary-information stream, or "".
std::string readNTFSDesc(const std::string& targetFileFullPathname);
std::string readNTFSDesc(const std::string& targetFileFullPathname, StreamAccess& streams);

// The old description stream's whole content as text, nothing trimmed, or "".
std::string readOldNTFSDesc(const std::string& targetFileFullPathname);
std::string readOldNTFSDesc(const std::string& targetFileFullPathname, StreamAccess& streams);

// Stores editor.text() (CR LF breaks, as the box holds it) in the summary-information
// stream of state.target.targetFileFullPathname, rebuilding the stream that is there
// (ours, else Samba's) or making a fresh one, in one write: a failed write leaves the
// old stream byte for byte. Then creates the empty marker stream; on a file with
// Samba's marks writes both in Samba's naming too (a summary that does not fit there
// is removed rather than left stale); empties existing old description streams in
// either naming, and sets a regular file's last-write time back to what it was, to the
// second (folders and system entries keep whatever time the write gave them).
//
// A write refused for want of permission ends the writer silently with Ok, touching
// nothing more. Any other failure of the summary or marker write returns Error and,
// when optionsCreateExpDescNonNTFS is on, ticks the export box so that the exported
// description file takes the description instead.
[[nodiscard]] WriteResult updateNTFSDesc(const SharedState& state, EditorState& editor);
[[nodiscard]] WriteResult updateNTFSDesc(const SharedState& state, EditorState& editor,
                                         StreamAccess& streams);
