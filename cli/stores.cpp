#include <ostream>

#include "cli/verbs.h"
#include "core/load_sequence.h"
#include "platform/mount_table.h"
#include "stores/descript_ion.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"
#include "stores/volume_note.h"
#include "stores/xdg_comment.h"

namespace {

// One store's text, a line of output for each of its lines.
void block(const Session& session, std::string_view name, std::string_view where,
           std::string_view text) {
    std::ostream& out = session.streams.out;
    out << "== " << name << " (" << session.shown(where) << ")\n";
    if (text.empty())
        out << "  (nothing)\n";
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find("\r\n", start);
        if (end == std::string::npos)
            end = text.size();
        out << "  " << session.shown(text.substr(start, end - start), "\t") << '\n';
        start = end + 2;
    }
}

}  // namespace

// Every store's text for the target, in the order loading tries them; under the summary
// stream, why the file itself cannot hold a description that Windows would see, judged
// for the text that loading finds.
int runStores(Session& session, const std::string& path) {
    if (auto ended = session.openTarget(path))
        return *ended;
    const TargetPaths& target = session.state.target;
    const std::string& full = target.targetFileFullPathname;
    const std::string failsafe = session.failsafeFile();
    block(session, "exported description file", full + ".description", readExpDesc(full));
    block(session, "old stream", "user.description", readOldNTFSDesc(full));
    block(session, "summary stream", "user.\\005SummaryInformation", readNTFSDesc(full));
    const FoundDescription found = findDescription(target, failsafe, storeReaders());
    if (std::string note = windowsCommentObstacle(full, found.text, readMountTable());
        !note.empty())
        session.streams.out << "  note: " << note << '\n';
    block(session, "folder index", target.indexFile, read00IndexFile(target));
    auto record = readFailsafeDB(failsafe, full);
    block(session, "failsafe database", failsafe,
          record ? (record->empty() ? "(a record without text)" : *record) : "");
    block(session, "file manager comment", "user.xdg.comment", readXdgComment(full).value_or(""));
    const std::string descriptIon = descriptIonFile(target.indexFilePath);
    block(session, "descript.ion",
          descriptIon.empty() ? target.indexFilePath + "descript.ion" : descriptIon,
          readDescriptIon(target).value_or(""));
    return kDone;
}
