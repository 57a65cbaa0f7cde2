#include <ostream>

#include "cli/listing.h"
#include "cli/progress.h"
#include "cli/verbs.h"

// Every described entry under the folder, the folder's own entries first, as JSON
// lines that `import` reads back.
int runExport(Session& session, const std::string& folderArgument) {
    auto folder = session.openFolder(folderArgument);
    if (!folder)
        return kRefused;
    Progress progress(session.streams, "exported");
    Listing listing(session, *folder);
    bool read = listing.listTree(*folder, [&](const ListedEntry& entry) {
        if (entry.text.empty())
            return;
        writeJsonLine(session, entry);
        progress.step();
    });
    if (!read)
        session.complain("some folders under " + *folder + " cannot be read");
    return read ? kDone : kFailed;
}
