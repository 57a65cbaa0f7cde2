#include "cli/session.h"

#include <ostream>
#include <sstream>

#include "core/escaped_text.h"
#include "core/paths.h"
#include "core/startup.h"
#include "core/target.h"
#include "platform/code_page.h"
#include "platform/environment.h"
#include "platform/lookup.h"

namespace {

constexpr std::string_view kLoadedFrom = "Loaded from ";

constexpr std::size_t kMaxDescriptionChars = 30000;

// The stores whose readers return every line followed by CR LF; the streams return the
// text as it was saved. The status label may carry a note after the store's name.
bool isLineBased(std::string_view status) {
    return status.starts_with("Loaded from exported description") ||
           status.starts_with("Loaded from '00_Index.txt'") ||
           status.starts_with("Loaded from failsafe");
}

}  // namespace

Session::Session(const std::string& appPath, CliStreams cliStreams, bool answerYes)
    : streams(cliStreams), prompter(answerYes, cliStreams.err), m_appPath(appPath) {}

bool Session::start() {
    StartupWindow noWindow;
    return runStartup(state, {m_appPath, appDataFolder()}, prompter, noWindow) ==
           StartupResult::Continue;
}

std::optional<int> Session::openTarget(const std::string& path) {
    if (!start() || resolvePath(path, state, prompter) == TargetResult::EndProgram)
        return kRefused;
    std::string readingText;
    switch (checkTargetExists(state, prompter, readingText)) {
        case ExistenceResult::Exists:
            return std::nullopt;
        case ExistenceResult::ReadingState:
            streams.out << shown(withUnixBreaks(readingText), kLineBreakAndTab);
            return kRefused;
        case ExistenceResult::EndProgram:
            return kRefused;
    }
    return kRefused;
}

std::optional<std::string> Session::openFolder(const std::string& path) {
    if (!start())
        return std::nullopt;
    std::string folder = path.starts_with('/') ? path : currentFolder() + path;
    folder = withTrailingSeparator(lexicallyNormal(folder));
    if (!IsADirectory(folder)) {
        complain(path + ": not a folder");
        return std::nullopt;
    }
    return folder;
}

std::optional<TargetPaths> EntryChecker::pathsOf(const std::string& path, bool isLink,
                                                 const DataPaths& data) {
    m_resolver.knowEntry(path, isLink);
    return pathsOf(path, data);
}

std::optional<TargetPaths> EntryChecker::pathsOf(const std::string& path, const DataPaths& data) {
    if (m_scratch.data.failsafeDBpath != data.failsafeDBpath)
        m_scratch.data = data;
    SilentPrompter silent;
    if (acceptTarget(path, m_scratch, silent, m_resolver) == TargetResult::EndProgram ||
        m_scratch.target.targetFileFullPathname != path)
        return std::nullopt;
    TargetPaths target = std::move(m_scratch.target);
    target.indexFilePath = std::string(folderOf(path));
    target.indexFile = target.indexFilePath + "00_index.txt";
    return target;
}

void Session::complain(std::string_view text) {
    streams.err << "veskor-cli: " << escapedControls(text) << '\n';
}

std::string Session::shown(std::string_view text, std::string_view kept) const {
    return streams.outIsTerminal ? escapedControls(text, kept) : std::string(text);
}

std::string printedText(const FoundDescription& found) {
    std::string_view text = found.text;
    if (isLineBased(found.status) && text.ends_with("\r\n"))
        text.remove_suffix(2);
    return withUnixBreaks(text);
}

std::string sourceName(std::string_view status) {
    if (status.starts_with(kLoadedFrom))
        status.remove_prefix(kLoadedFrom.size());
    return std::string(status);
}

std::string withCrLfBreaks(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' || text[i] == '\n') {
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                ++i;
            out += "\r\n";
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string storeRefusal(const std::string& text) {
    // The metadata stream ends its text at the first NUL: refuse rather than keep a
    // different text in each store.
    if (text.find('\0') != std::string::npos)
        return "the description holds a NUL byte, which the file's metadata cannot keep.";
    if (std::size_t n = characterCount(text); n > kMaxDescriptionChars)
        return "the description has " + std::to_string(n) +
               " characters (line breaks count 2); at most 30000 fit.";
    return "";
}

SaveOutcome saveDescription(SharedState& state, PlainEditorState& editor, const std::string& text,
                            bool exportBox, Prompter& prompter) {
    // The editor's state once a description is loaded: the save may run. Loading would
    // also name the database file; the save needs no more of it.
    state.data.failsafeDBfile = state.data.failsafeDBpath + "ver1.7.dat";
    editor.setText(text);
    editor.setUpdateEnabled(true);
    editor.setExportChecked(exportBox || isOn(state.options.optionsAutoCreateExpDesc));
    return Command1_Click(state, editor, prompter);
}
