#include <istream>
#include <iterator>
#include <ostream>

#include "cli/verbs.h"
#include "platform/code_page.h"

namespace {

// Standard input without one final line break, so that `get | set` changes nothing.
std::string readInput(std::istream& in) {
    std::string text(std::istreambuf_iterator<char>(in), {});
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    if (!text.empty() && text.back() == '\r')
        text.pop_back();
    return text;
}

}  // namespace

int runSet(Session& session, const SetCall& call) {
    if (auto ended = session.openTarget(call.path))
        return *ended;
    // Bytes that are not UTF-8 are read as every file of the program is, so each store
    // keeps the same text.
    std::string text =
        withCrLfBreaks(decodeFileText(call.text ? *call.text : readInput(session.streams.in)));
    if (std::string why = storeRefusal(text); !why.empty()) {
        session.complain(why);
        return kUsage;
    }
    switch (
        saveDescription(session.state, session.editor, text, call.exportBox, session.prompter)) {
        case SaveOutcome::Stored:
            return kDone;
        case SaveOutcome::EndedWithoutStoring:
            return kEndedWithoutStoring;
        case SaveOutcome::NotRun:
        case SaveOutcome::ReturnedToEditing:
            return kFailed;
    }
    return kFailed;
}
