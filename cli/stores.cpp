#include <ostream>

#include "cli/verbs.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"

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

// Every store's text for the target, in the order loading tries them.
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
    block(out, "folder index", target.indexFile, read00IndexFile(target));
    auto record = readFailsafeDB(failsafe, full);
    block(out, "failsafe database", failsafe,
          record ? (record->empty() ? "(a record without text)" : *record) : "");
    return kDone;
}
