#pragma once

#include <optional>
#include <string>

#include "cli/cli.h"
#include "contracts/editor_state.h"
#include "contracts/shared_state.h"
#include "core/load_sequence.h"
#include "core/save_sequence.h"
#include "core/stderr_prompter.h"
#include "core/target.h"

// What every verb stands on: the start-up's data folder and settings, the prompts on
// standard error, and the one target or folder of the call.

// The target paths of entries as opening each would set them, without a message or a
// lookup: nullopt where the editor would refuse the entry or it names another entry's
// exported file. Keeps what the checks of one folder's entries share; one per thread.
class EntryChecker {
public:
    [[nodiscard]] std::optional<TargetPaths> pathsOf(const std::string& path,
                                                     const DataPaths& data);
    // The same for an entry whose folder listing said whether it is a link.
    [[nodiscard]] std::optional<TargetPaths> pathsOf(const std::string& path, bool isLink,
                                                     const DataPaths& data);

private:
    SharedState m_scratch;  // kept to spare an allocation per entry
    PathResolver m_resolver;
};

// What a text of several lines keeps on a terminal: its own line breaks and tabs.
inline constexpr std::string_view kLineBreakAndTab = "\n\t";

inline constexpr int kDone = 0, kFailed = 1, kRefused = 2, kNotFound = 3, kEndedWithoutStoring = 4,
                     kUsage = 64;

class Session {
public:
    Session(const std::string& appPath, CliStreams streams, bool answerYes = false);

    // The start-up up to the settings. False after its fatal message.
    [[nodiscard]] bool start();

    // Start-up, then the target's checks, as the editor opens a target. An exit code
    // when the call must end there.
    [[nodiscard]] std::optional<int> openTarget(const std::string& path);

    // Start-up, then the folder of a listing: an absolute, normalised path ending in
    // "/". nullopt (after a message) when it is not a folder.
    [[nodiscard]] std::optional<std::string> openFolder(const std::string& path);

    // EntryChecker's answer with this session's data folder.
    [[nodiscard]] std::optional<TargetPaths> targetPathsOf(const std::string& path) {
        return m_checker.pathsOf(path, state.data);
    }

    std::string failsafeFile() const { return state.data.failsafeDBpath + "ver1.7.dat"; }

    // veskor-cli's message for the user: "veskor-cli: " + text on standard error, its
    // control characters escaped.
    void complain(std::string_view text);

    // A name or text for standard output: as it is in a pipe or a file, its control
    // characters (but those in `kept`) escaped on a terminal.
    [[nodiscard]] std::string shown(std::string_view text, std::string_view kept = "") const;

    CliStreams streams;
    SharedState state;
    PlainEditorState editor;
    StderrPrompter prompter;

private:
    std::string m_appPath;
    EntryChecker m_checker;
};

// A prompter that says nothing and answers No: the checks of many entries at once.
class SilentPrompter : public Prompter {
public:
    Answer message(std::string_view, std::string_view, Buttons buttons, Icon) override {
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
    std::optional<std::string> input(std::string_view, std::string_view,
                                     std::string_view) override {
        return std::nullopt;
    }
};

// The editor's line breaks: every CR LF, LF or lone CR becomes CR LF.
[[nodiscard]] std::string withCrLfBreaks(std::string_view text);

// Why a text (CR LF breaks) cannot be stored as it is, or "".
[[nodiscard]] std::string storeRefusal(const std::string& text);

// The editor's Update on an opened target with the text in its box: the full save.
[[nodiscard]] SaveOutcome saveDescription(SharedState& state, PlainEditorState& editor,
                                          const std::string& text, bool exportBox,
                                          Prompter& prompter);

// A description as veskor-cli prints it: LF breaks, and without the CR LF that the
// line-based stores add after every line, so that printing it with one final line
// break and storing what `set` reads back changes nothing.
[[nodiscard]] std::string printedText(const FoundDescription& found);

// The store part of a status text: "NTFS", "failsafe", "exported description"...
[[nodiscard]] std::string sourceName(std::string_view status);
