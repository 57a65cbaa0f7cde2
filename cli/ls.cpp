#include <ostream>

#include "cli/listing.h"
#include "cli/verbs.h"

namespace {

std::string_view firstLine(std::string_view text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

// One line per entry of the folder that has a description (every entry with -a):
// NAME, a tab and the description's first line; or the JSON line of each.
int runLs(Session& session, const LsCall& call) {
    auto folder = session.openFolder(call.folder);
    if (!folder)
        return kRefused;
    std::ostream& out = session.streams.out;
    Listing listing(session, *folder);
    bool read = listing.listFolder(*folder, [&](const ListedEntry& entry) {
        if (entry.text.empty() && !call.all)
            return;
        if (call.json)
            writeJsonLine(session, entry);
        else
            out << session.shown(entry.name) << '\t' << session.shown(firstLine(entry.text))
                << '\n';
    });
    if (!read) {
        session.complain(*folder + ": the folder cannot be read");
        return kFailed;
    }
    return kDone;
}
