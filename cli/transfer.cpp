#include "cli/transfer.h"

#include <cerrno>
#include <filesystem>

#include "cli/progress.h"
#include "cli/transfer_staging.h"
#include "core/paths.h"
#include "platform/code_page.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/lookup.h"
#include "platform/process.h"
#include "stores/descript_ion.h"
#include "stores/failsafe_db.h"
#include "stores/folder_index.h"

namespace {

// Absolute, normalised, without a trailing "/".
std::string fullPath(const std::string& path) {
    std::string full = lexicallyNormal(path.starts_with('/') ? path : currentFolder() + path);
    while (full.size() > 1 && full.ends_with('/'))
        full.pop_back();
    return full;
}

// Anything at the path, a dangling link included. A name longer than the file system
// allows (the exported file of a name of the longest length) holds nothing; any other
// failure to look counts as something there.
bool somethingAt(const std::string& path) {
    std::error_code ec;
    const auto type = std::filesystem::symlink_status(path, ec).type();
    return type != std::filesystem::file_type::not_found && ec != std::errc::filename_too_long;
}

// How many entries have a path that upper-cases as `path` (a full path) does.
std::size_t entriesSharingKey(const std::string& path) {
    std::vector<std::string> matches{"/"};
    std::size_t start = 1;
    while (start < path.size() && !matches.empty()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string wanted = upperCase(path.substr(start, end - start));
        std::vector<std::string> next;
        for (const std::string& folder : matches) {
            std::vector<FolderItem> items;
            if (readFolder(folder, items))
                continue;
            for (const FolderItem& item : items)
                if (upperCase(item.name) == wanted)
                    next.push_back(folder + item.name + "/");
        }
        matches = std::move(next);
        start = end + 1;
    }
    return matches.size();
}

struct Ends {
    TargetPaths from, to;
};

SharedState stateFor(const Session& session, const TargetPaths& target, const std::string& text,
                     bool remove) {
    SharedState state;
    state.data = session.state.data;
    state.options = session.state.options;
    state.target = target;
    state.targetFileDesc = text;
    state.removeTargetFileDescFlag = remove ? 1 : 0;
    return state;
}

// A store that keeps the entries of one folder in one file: the folder index, or the
// folder's descript.ion where it has one.
struct FolderStore {
    std::string name;
    // The entry's text, CR LF breaks, no line break after the last line.
    std::optional<std::string> (*read)(const TargetPaths& target);
    WriteResult (*write)(const SharedState& state, Prompter& prompter);
};

std::optional<std::string> indexEntry(const TargetPaths& target) {
    // The reader ends every line with a CR LF, where the writer puts one between lines.
    std::string text = read00IndexFile(target);
    if (text.empty())
        return std::nullopt;
    if (text.ends_with("\r\n"))
        text.resize(text.size() - 2);
    return text;
}

WriteResult writeIndexEntry(const SharedState& state, Prompter& prompter) {
    return update00IndexFile(state, prompter);
}

WriteResult writeDescriptIonEntry(const SharedState& state, Prompter& prompter) {
    return updateDescriptIon(state, prompter);
}

const FolderStore kIndex{"00_index.txt", indexEntry, writeIndexEntry};
const FolderStore kDescriptIon{"descript.ion", readDescriptIon, writeDescriptIonEntry};

class Transferring {
public:
    Transferring(Session& session, const Transfer& transfer)
        : m_session(session), m_transfer(transfer), m_progress(session.streams, "copying") {}

    int run();

private:
    std::optional<int> refusal(const std::string& from, const std::string& to);
    bool carryEntry(const std::string& from, const std::string& to);
    bool copyEntry(const std::string& from, const std::string& to);
    // Runs mv or cp, showing on a terminal how long it has been running; true when it
    // exits 0.
    bool runCoreutil(const std::vector<std::string>& argv, const std::string& from);
    void carryExportedFile();
    void carryFolderEntry(const FolderStore& store, const std::optional<std::string>& text);
    void carryFailsafeRecords();
    void makeSureItArrived(const std::string& before);

    Session& m_session;
    Transfer m_transfer;
    Progress m_progress;
    Ends m_ends;
    bool m_failed = false;
};

std::optional<int> Transferring::refusal(const std::string& from, const std::string& to) {
    auto fromTarget = m_session.targetPathsOf(from), toTarget = m_session.targetPathsOf(to);
    if (!fromTarget || !toTarget) {
        m_session.complain("no description can be kept for " + (fromTarget ? to : from));
        return kRefused;
    }
    m_ends = {*fromTarget, *toTarget};
    Entry source = lookupEntry(from);
    std::string why;
    if (source.kind == EntryKind::Missing || source.kind == EntryKind::Error)
        why = from + ": not found";
    else if (somethingAt(to))
        why = to + ": exists already";
    else if (somethingAt(to + ".description"))
        why = to + ".description: exists already";
    else if (to.starts_with(from + "/"))
        why = to + ": lies inside " + from;
    else if (source.kind == EntryKind::Directory && m_transfer.keepSource && !m_transfer.recursive)
        why = from + ": a folder is copied with cp -r";
    if (why.empty())
        return std::nullopt;
    m_session.complain(why);
    return kRefused;
}

// A rename where it can; across file systems, and for every copy, the coreutils that
// keep mode, times, links and extended attributes.
bool Transferring::carryEntry(const std::string& from, const std::string& to) {
    if (m_transfer.keepSource)
        return copyEntry(from, to);
    std::error_code ec = renameNoReplace(from, to);
    if (!ec || ec.value() != EXDEV) {
        if (ec)
            m_session.complain(from + ": cannot be moved: " + ec.message());
        return !ec;
    }
    // mv -n leaves the source where it was when the destination appeared meanwhile.
    if (!runCoreutil({"mv", "-T", "-n", "--", from, to}, from) || !somethingAt(to) ||
        somethingAt(from)) {
        m_session.complain(from + ": cannot be moved");
        return false;
    }
    return true;
}

// The copy is made in a hidden folder beside the destination and renamed into place,
// which fails when the destination appeared meanwhile: cp -n would then skip the copy
// and still report success, and the stores would describe the other file.
bool Transferring::copyEntry(const std::string& from, const std::string& to) {
    const std::string folder(folderOf(to));
    removeAbandonedStagingFolders(folder);
    StagingFolder staging;
    if (std::error_code ec = staging.create(folder)) {
        m_session.complain(to + ": cannot be copied to: " + ec.message());
        return false;
    }
    const std::string name(lastComponent(to));
    std::error_code ec;
    const bool copied =
        runCoreutil({"cp", "-T", "-n", "-a", "--", from, staging.childPath(name)}, from) &&
        !(ec = staging.moveOut(name, to));
    if (!copied)
        m_session.complain(from + ": cannot be copied" + (ec ? ": " + ec.message() : ""));
    return copied;
}

bool Transferring::runCoreutil(const std::vector<std::string>& argv, const std::string& from) {
    const auto started = std::chrono::steady_clock::now();
    int status = -1;
    std::error_code ec = runAndWait(argv, status, [&] {
        auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
            std::chrono::steady_clock::now() - started);
        m_progress.show(from + " (" + std::to_string(seconds.count()) + " s)");
    });
    return !ec && status == 0;
}

void Transferring::carryExportedFile() {
    const std::string from = m_ends.from.targetFileFullPathname + ".description";
    if (somethingAt(from) && !carryEntry(from, m_ends.to.targetFileFullPathname + ".description"))
        m_failed = true;
}

// The source's entry leaves first, so that a rename that changes only the letter case
// within a folder ends with the one entry. A text that `set` would refuse (a NUL byte)
// is not carried; a stale entry of the destination's name goes.
void Transferring::carryFolderEntry(const FolderStore& store,
                                    const std::optional<std::string>& text) {
    const TargetPaths& from = m_ends.from;
    const TargetPaths& to = m_ends.to;
    if (text && !m_transfer.keepSource &&
        store.write(stateFor(m_session, from, "", true), m_session.prompter) == WriteResult::Error)
        m_failed = true;
    const std::string refusal = text ? storeRefusal(*text) : "";
    if (!refusal.empty())
        m_session.complain(to.targetFileFullPathname + ": its " + store.name +
                           " entry is not carried: " + refusal);
    const bool carried = text && refusal.empty();
    const bool staleEntry = !carried && store.read(to);
    if ((carried || staleEntry) &&
        store.write(stateFor(m_session, to, carried ? *text : "", !carried), m_session.prompter) ==
            WriteResult::Error)
        m_failed = true;
}

// On a file system that tells letter case apart, entries whose paths differ only in
// case share their failsafe records, and nothing tells whose a record is: those are
// left as they are, the moved entry's kept at the old key too, and the destination's
// namesake's kept while the moved records do not join them.
void Transferring::carryFailsafeRecords() {
    const std::string &from = m_ends.from.targetFileFullPathname,
                      &to = m_ends.to.targetFileFullPathname;
    FailsafeMove move{.from = from, .to = to, .keepOld = m_transfer.keepSource};
    if (upperCase(from) != upperCase(to)) {
        move.keepOld = move.keepOld || entriesSharingKey(from) > 0;
        move.leaveDestination = entriesSharingKey(to) > 1;
    }
    if (moveFailsafeRecords(m_session.failsafeFile(), move, m_session.prompter) ==
        WriteResult::Error)
        m_failed = true;
}

// A store that could not follow (a destination volume without extended attributes,
// say) must not lose the description: the full save stores it where it can.
void Transferring::makeSureItArrived(const std::string& before) {
    auto arrived = [&] {
        return printedText(findDescription(m_ends.to, m_session.failsafeFile(), storeReaders())) ==
               before;
    };
    if (arrived())
        return;
    SharedState state = stateFor(m_session, m_ends.to, "", false);
    PlainEditorState editor;
    StderrPrompter yes(true, m_session.streams.err);
    if (before.empty() || !storeRefusal(before).empty() ||
        saveDescription(state, editor, withCrLfBreaks(before), false, yes) != SaveOutcome::Stored ||
        !arrived()) {
        m_session.complain(m_ends.to.targetFileFullPathname +
                           ": the description did not arrive whole");
        m_failed = true;
    }
}

int Transferring::run() {
    if (!m_session.start())
        return kRefused;
    // Saves of the two items, and of the entries of a moved folder, wait until every
    // store has followed; the checks below already see what a save before us did.
    const std::string from = fullPath(m_transfer.source), to = fullPath(m_transfer.destination);
    ItemTurns turn;
    if (turn.acquire({folderOfFile(from), folderOfFile(to), from}, kFolderLockTimeout)) {
        m_session.complain(from + ": another save, move or copy of it is still running");
        return kFailed;
    }
    if (auto refused = refusal(from, to))
        return *refused;
    const std::string failsafe = m_session.failsafeFile();
    const std::string before = printedText(findDescription(m_ends.from, failsafe, storeReaders()));
    const std::optional<std::string> indexText = kIndex.read(m_ends.from),
                                     descriptIonText = kDescriptIon.read(m_ends.from);
    if (!carryEntry(m_ends.from.targetFileFullPathname, m_ends.to.targetFileFullPathname))
        return kFailed;
    carryExportedFile();
    carryFolderEntry(kIndex, indexText);
    carryFolderEntry(kDescriptIon, descriptIonText);
    carryFailsafeRecords();
    makeSureItArrived(before);
    return m_failed ? kFailed : kDone;
}

}  // namespace

int runTransfer(Session& session, const Transfer& transfer) {
    return Transferring(session, transfer).run();
}
