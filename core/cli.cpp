#include "core/cli.h"

#include <iostream>
#include <iterator>
#include <optional>

#include "core/load_sequence.h"
#include "core/save_sequence.h"
#include "core/startup.h"
#include "core/stderr_prompter.h"
#include "core/target.h"
#include "platform/code_page.h"
#include "platform/environment.h"
#include "stores/exported_desc.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/ntfs_streams.h"

namespace {

constexpr int kDone = 0, kReturnedToEditing = 1, kRefused = 2, kNotFound = 3,
              kEndedWithoutStoring = 4, kUsage = 64;
constexpr std::size_t kMaxDescriptionChars = 30000;

constexpr std::string_view kHelp = R"(Usage:
  veskor-cli get PATH
      Print the description of PATH (a file or folder) with LF line breaks.
      Where it was found goes to standard error, e.g. "Loaded from NTFS".
      Exit 0, or 3 with "Description not found".
  veskor-cli set [--export] [--yes] PATH [TEXT]
      Store TEXT, or standard input without its final line break, as the
      description of PATH: failsafe database, exported file (when ticked),
      00_index.txt and the file's metadata, as the editor's Update does.
      An empty text deletes the description (with --yes).
      --export  write PATH.description as well
      --yes     answer Yes to every question (otherwise No)
      Exit 0 stored; 1 a store failed or a question was answered No;
      4 ended without storing (target gone, or stored nowhere on purpose).
  veskor-cli stores PATH
      Show what every store holds for PATH, in the order the editor loads them.
  veskor-cli --help

A refused or missing target exits 2. When PATH is gone but PATH.description
exists, its text is printed (read only) and nothing is saved. Messages go to
standard error. A wrong call exits 64.
)";

struct Call {
    std::string verb;
    std::string path;
    std::optional<std::string> text;
    bool exportBox = false;
    bool yes = false;
};

std::optional<Call> parseCall(const std::vector<std::string>& args) {
    if (args.empty())
        return std::nullopt;
    Call call;
    call.verb = args[0];
    std::vector<std::string> rest;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (call.verb == "set" && rest.empty() && args[i] == "--export")
            call.exportBox = true;
        else if (call.verb == "set" && rest.empty() && args[i] == "--yes")
            call.yes = true;
        else
            rest.push_back(args[i]);
    }
    bool takesText = call.verb == "set";
    if (rest.empty() || rest.size() > (takesText ? 2u : 1u))
        return std::nullopt;
    call.path = rest[0];
    if (rest.size() == 2)
        call.text = rest[1];
    return call;
}

// The editor's line breaks: every CR LF, LF or lone CR becomes CR LF.
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

// Standard input without one final line break, so that `get | set` changes nothing.
std::string readInput(std::istream& in) {
    std::string text(std::istreambuf_iterator<char>(in), {});
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    if (!text.empty() && text.back() == '\r')
        text.pop_back();
    return text;
}

class Session {
public:
    Session(const std::string& appPath, CliStreams streams, bool yes)
        : m_streams(streams), m_prompter(yes, streams.err), m_appPath(appPath) {}

    // Start-up, then the target's checks. Returns an exit code when the call must end.
    std::optional<int> openTarget(const std::string& path) {
        StartupWindow noWindow;
        if (runStartup(m_state, {m_appPath, appDataFolder()}, m_prompter, noWindow) ==
            StartupResult::EndProgram)
            return kRefused;
        if (resolveTarget(path, m_state, m_prompter) == TargetResult::EndProgram)
            return kRefused;
        std::string readingText;
        switch (checkTargetExists(m_state, m_prompter, readingText)) {
            case ExistenceResult::Exists:
                return std::nullopt;
            case ExistenceResult::ReadingState:
                m_streams.out << withUnixBreaks(readingText);
                return kRefused;
            case ExistenceResult::EndProgram:
                return kRefused;
        }
        return kRefused;
    }

    int get() {
        loadDescription(m_state, m_editor);
        m_streams.err << m_editor.status << '\n';
        if (m_editor.status == "Description not found")
            return kNotFound;
        m_streams.out << withUnixBreaks(m_editor.text());
        return kDone;
    }

    int set(const Call& call) {
        // Bytes that are not UTF-8 are read as every file of the program is, so each
        // store keeps the same text.
        std::string text =
            withCrLfBreaks(decodeFileText(call.text ? *call.text : readInput(m_streams.in)));
        // The metadata stream ends its text at the first NUL: refuse rather than keep
        // a different text in each store.
        if (text.find('\0') != std::string::npos) {
            m_streams.err << "veskor-cli: the description holds a NUL byte, which the file's "
                             "metadata cannot keep.\n";
            return kUsage;
        }
        if (std::size_t n = characterCount(text); n > kMaxDescriptionChars) {
            m_streams.err << "veskor-cli: the description has " << n
                          << " characters (line breaks count 2); at most 30000 fit.\n";
            return kUsage;
        }
        // The editor's state once a description is loaded: the save may run. Loading
        // would also name the database file; the save needs no more of it.
        m_state.data.failsafeDBfile = m_state.data.failsafeDBpath + "ver1.7.dat";
        m_editor.setText(text);
        m_editor.setUpdateEnabled(true);
        m_editor.setExportChecked(call.exportBox || isOn(m_state.options.optionsAutoCreateExpDesc));
        switch (Command1_Click(m_state, m_editor, m_prompter)) {
            case SaveOutcome::Stored:
                return kDone;
            case SaveOutcome::EndedWithoutStoring:
                return kEndedWithoutStoring;
            case SaveOutcome::NotRun:
            case SaveOutcome::ReturnedToEditing:
                return kReturnedToEditing;
        }
        return kReturnedToEditing;
    }

    int stores() {
        const std::string& target = m_state.target.targetFileFullPathname;
        const std::string failsafe = m_state.data.failsafeDBpath + "ver1.7.dat";
        block("exported description file", target + ".description", readExpDesc(target));
        block("old stream", "user.description", readOldNTFSDesc(target));
        block("summary stream", "user.\\005SummaryInformation", readNTFSDesc(target));
        block("folder index", m_state.target.indexFile, read00IndexFile(m_state.target));
        auto record = readFailsafeDB(failsafe, target);
        block("failsafe database", failsafe,
              record ? (record->empty() ? "(a record without text)" : *record) : "");
        return kDone;
    }

private:
    void block(std::string_view name, std::string_view where, const std::string& text) {
        std::ostream& out = m_streams.out;
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

    CliStreams m_streams;
    StderrPrompter m_prompter;
    std::string m_appPath;
    SharedState m_state;
    PlainEditorState m_editor;
};

}  // namespace

int runCli(const std::vector<std::string>& args, const std::string& appPath, CliStreams streams) {
    if (!args.empty() && (args[0] == "--help" || args[0] == "-h" || args[0] == "help")) {
        streams.out << kHelp;
        return kDone;
    }
    auto call = parseCall(args);
    if (!call || (call->verb != "get" && call->verb != "set" && call->verb != "stores")) {
        streams.err << kHelp;
        return kUsage;
    }
    Session session(appPath, streams, call->yes);
    if (auto ended = session.openTarget(call->path))
        return *ended;
    if (call->verb == "get")
        return session.get();
    if (call->verb == "set")
        return session.set(*call);
    return session.stores();
}
