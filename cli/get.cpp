#include <ostream>

#include "cli/verbs.h"
#include "core/load_sequence.h"

int runGet(Session& session, const std::string& path) {
    if (auto ended = session.openTarget(path))
        return *ended;
    loadDescription(session.state, session.editor);
    const std::string& status = session.editor.status;
    session.streams.err << status << '\n';
    if (status == "Description not found")
        return kNotFound;
    // One final line break, so that the prompt starts on a line of its own; `set` drops
    // it again. Escaped on a terminal too: a person reads it there, and a description can
    // come from a file that others write (a shared folder's index).
    session.streams.out << session.shown(printedText({session.editor.text(), status}),
                                         kLineBreakAndTab)
                        << '\n';
    return kDone;
}
