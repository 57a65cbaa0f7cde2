#include <ostream>

#include "cli/json_lines.h"
#include "cli/listing.h"
#include "cli/progress.h"
#include "cli/verbs.h"

// Every described entry under the folder, the folder's own entries first, as JSON
// lines that `import` reads back.
int runExport(Session& session, const std::string& folderArgument) {
    auto folder = session.openFolder(folderArgument);
    if (!folder)
        return kRefused;
    std::ostream& out = session.streams.out;
    bool lost = false;
    Progress progress(session.streams, "exported");
    Listing listing(session, *folder);
    bool read = listing.listTree(*folder, [&](const ListedEntry& entry) {
        if (entry.text.empty())
            return;
        if (auto line = jsonLine({entry.path, entry.text, sourceName(entry.found.status)})) {
            out << *line << '\n';
            progress.step();
        } else {
            session.complain(entry.path +
                             ": the name is not UTF-8, which JSON cannot hold; left out");
            lost = true;
        }
    });
    if (!read)
        session.complain("some folders under " + *folder + " cannot be read");
    return read && !lost ? kDone : kFailed;
}
