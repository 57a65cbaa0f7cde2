#include <ostream>

#include "cli/listing.h"
#include "cli/progress.h"
#include "cli/verbs.h"
#include "platform/code_page.h"

// Every file and folder under the folder whose description holds the text, letter
// case ignored: its full path, or its JSON line.
int runFind(Session& session, const FindCall& call) {
    auto folder = session.openFolder(call.folder);
    if (!folder)
        return kRefused;
    const std::string wanted = upperCase(call.text);
    std::ostream& out = session.streams.out;
    bool found = false;
    Progress progress(session.streams, "searched");
    Listing listing(session, *folder);
    bool read = listing.listTree(*folder, [&](const ListedEntry& entry) {
        progress.step();
        if (entry.text.empty() || upperCase(entry.text).find(wanted) == std::string::npos)
            return;
        found = true;
        if (call.json)
            writeJsonLine(session, entry);
        else
            out << session.shown(entry.path) << '\n';
    });
    if (!read)
        session.complain("some folders under " + *folder + " cannot be read");
    if (!read)
        return kFailed;
    return found ? kDone : kNotFound;
}
