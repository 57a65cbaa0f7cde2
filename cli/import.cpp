#include <fstream>
#include <istream>
#include <ostream>

#include "cli/json_lines.h"
#include "cli/progress.h"
#include "cli/verbs.h"
#include "core/escaped_text.h"
#include "core/target.h"

namespace {

enum class Outcome { Stored, Missing, Refused, Failed };

// One line's description through the full save, as `set --yes` stores it.
Outcome storeLine(Session& session, const DescriptionLine& line) {
    SharedState state;
    state.data = session.state.data;
    state.options = session.state.options;
    SilentPrompter silent;
    std::string readingText;
    if (resolvePath(line.path, state, silent) == TargetResult::EndProgram)
        return Outcome::Refused;
    if (checkTargetExists(state, silent, readingText) != ExistenceResult::Exists)
        return Outcome::Missing;
    const std::string text = withCrLfBreaks(line.description);
    if (!storeRefusal(text).empty())
        return Outcome::Refused;
    PlainEditorState editor;
    if (saveDescription(state, editor, text, false, session.prompter) != SaveOutcome::Stored)
        return Outcome::Failed;
    return Outcome::Stored;
}

std::string_view reasonOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Missing:
            return "missing";
        case Outcome::Refused:
            return "refused";
        case Outcome::Failed:
        case Outcome::Stored:
            break;
    }
    return "not stored";
}

}  // namespace

// Every line stores its description; a line that cannot be stored is reported and
// skipped, and the lines after it are still stored.
int runImport(Session& session, const std::string& file) {
    if (!session.start())
        return kRefused;
    std::ifstream opened;
    if (!file.empty()) {
        opened.open(file, std::ios::binary);
        if (!opened) {
            session.complain(file + ": cannot be read");
            return kRefused;
        }
    }
    std::istream& in = file.empty() ? session.streams.in : opened;
    std::ostream& out = session.streams.out;
    std::size_t stored = 0, skipped = 0, lineNumber = 0;
    Progress progress(session.streams, "imported");
    for (std::string text; std::getline(in, text);) {
        ++lineNumber;
        if (text.empty())
            continue;
        auto line = parseJsonLine(text);
        Outcome outcome = line ? storeLine(session, *line) : Outcome::Refused;
        if (outcome == Outcome::Stored) {
            ++stored;
            progress.step();
            continue;
        }
        ++skipped;
        if (line)
            out << "skipped (" << reasonOf(outcome) << "): " << escapedControls(line->path) << '\n';
        else
            out << "skipped (not a description line): line " << lineNumber << '\n';
    }
    out << "stored " << stored << ", skipped " << skipped << '\n';
    return skipped == 0 ? kDone : kFailed;
}
