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

void block(std::ostream& out, std::string_view name, std::string_view where,
           const std::string& text) {
    out << "== " << name << " (" << where << ")\n";
    if (text.empty())
        out << "  (nothing)\n";
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find("\r\n", start);
        if (end == std::string::npos)
            end = text.size();
        out << "  " << text.substr(start, end - start) << '\n';
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
    std::ostream& out = session.streams.out;
    block(out, "exported description file", full + ".description", readExpDesc(full));
    block(out, "old stream", "user.description", readOldNTFSDesc(full));
    block(out, "summary stream", "user.\\005SummaryInformation", readNTFSDesc(full));
    const FoundDescription found = findDescription(target, failsafe, storeReaders());
    if (std::string note = windowsCommentObstacle(full, found.text, readMountTable());
        !note.empty())
        out << "  note: " << note << '\n';
    block(out, "folder index", target.indexFile, read00IndexFile(target));
    auto record = readFailsafeDB(failsafe, full);
    block(out, "failsafe database", failsafe,
          record ? (record->empty() ? "(a record without text)" : *record) : "");
    block(out, "file manager comment", "user.xdg.comment", readXdgComment(full).value_or(""));
    const std::string descriptIon = descriptIonFile(target.indexFilePath);
    block(out, "descript.ion",
          descriptIon.empty() ? target.indexFilePath + "descript.ion" : descriptIon,
          readDescriptIon(target).value_or(""));
    return kDone;
}
