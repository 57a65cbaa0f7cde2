#include <fstream>
#include <istream>
#include <ostream>

#include "cli/import_batch.h"
#include "cli/json_lines.h"
#include "cli/progress.h"
#include "cli/verbs.h"
#include "core/escaped_text.h"
#include "core/target.h"

namespace {

// Lines stored together: the failsafe database is rewritten once for as many lines, and
// the batch holds their texts meanwhile.
constexpr std::size_t kBatchLines = 4096;
constexpr std::size_t kBatchBytes = 16u << 20;

enum class Outcome { Stored, Missing, Refused, Failed, Waiting };

std::string_view reasonOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Missing:
            return "missing";
        case Outcome::Refused:
            return "refused";
        case Outcome::Failed:
        case Outcome::Stored:
        case Outcome::Waiting:
            break;
    }
    return "not stored";
}

// One line of the file and what became of it; a line that waits for its batch's save
// has the save at `save`.
struct ImportLine {
    std::size_t number = 0;
    std::optional<std::string> path;  // nullopt: not a description line
    Outcome outcome = Outcome::Refused;
    std::size_t save = 0;
};

class ImportRun {
public:
    explicit ImportRun(Session& session)
        : m_session(session), m_progress(session.streams, "imported") {}

    // Checks the line's target as `set --yes` would open it; a line that can be stored
    // waits for its batch.
    void add(std::size_t number, const std::optional<DescriptionLine>& line) {
        ImportLine entry{number, line ? std::optional(line->path) : std::nullopt};
        if (line)
            entry.outcome = open(*line);
        if (entry.outcome == Outcome::Waiting)
            entry.save = m_saves.size() - 1;
        m_lines.push_back(std::move(entry));
        if (m_saves.size() >= kBatchLines || m_batchBytes >= kBatchBytes)
            finishBatch();
    }

    // Stores the waiting lines and reports every line taken since the last report.
    void finishBatch() {
        saveBatch(m_saves, m_session.prompter);
        for (ImportLine& line : m_lines) {
            if (line.outcome == Outcome::Waiting)
                line.outcome = *m_saves[line.save].outcome == SaveOutcome::Stored ? Outcome::Stored
                                                                                  : Outcome::Failed;
            report(line);
        }
        m_lines.clear();
        m_saves.clear();
        m_batchBytes = 0;
    }

    std::size_t stored = 0, skipped = 0;

private:
    Outcome open(const DescriptionLine& line) {
        BatchedSave save;
        save.state.data = m_session.state.data;
        save.state.options = m_session.state.options;
        SilentPrompter silent;
        std::string readingText;
        if (resolvePath(line.path, save.state, silent) == TargetResult::EndProgram)
            return Outcome::Refused;
        if (checkTargetExists(save.state, silent, readingText) != ExistenceResult::Exists)
            return Outcome::Missing;
        const std::string text = withCrLfBreaks(line.description);
        if (!storeRefusal(text).empty())
            return Outcome::Refused;
        // The editor's state once a description is loaded, as `set` saves it.
        save.state.data.failsafeDBfile = save.state.data.failsafeDBpath + "ver1.7.dat";
        save.editor.setText(text);
        save.editor.setUpdateEnabled(true);
        save.editor.setExportChecked(isOn(save.state.options.optionsAutoCreateExpDesc));
        m_batchBytes += text.size();
        m_saves.push_back(std::move(save));
        return Outcome::Waiting;
    }

    void report(const ImportLine& line) {
        std::ostream& out = m_session.streams.out;
        if (line.outcome == Outcome::Stored) {
            ++stored;
            m_progress.step();
            return;
        }
        ++skipped;
        if (line.path)
            out << "skipped (" << reasonOf(line.outcome) << "): " << escapedControls(*line.path)
                << '\n';
        else
            out << "skipped (not a description line): line " << line.number << '\n';
    }

    Session& m_session;
    Progress m_progress;
    std::vector<ImportLine> m_lines;
    std::vector<BatchedSave> m_saves;
    std::size_t m_batchBytes = 0;
};

}  // namespace

// Every line stores its description; a line that cannot be stored is reported and
// skipped, and the lines after it are still stored. Lines are stored in batches, each
// store ending up as if every line had been saved in turn.
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
    ImportRun run(session);
    std::size_t lineNumber = 0;
    for (std::string text; std::getline(in, text);) {
        ++lineNumber;
        if (!text.empty())
            run.add(lineNumber, parseJsonLine(text));
    }
    run.finishBatch();
    session.streams.out << "stored " << run.stored << ", skipped " << run.skipped << '\n';
    return run.skipped == 0 ? kDone : kFailed;
}
