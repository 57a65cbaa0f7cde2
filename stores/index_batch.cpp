#include "stores/index_batch.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "platform/regular_file.h"
#include "stores/index_entry.h"

namespace {

using namespace indexEntry;

constexpr std::string_view kOlderIndexName = "Index_00.txt";
constexpr std::string_view kUpdateFailed =
    "Error: Problem while updating '00_index.txt' file.\r\n"
    "(You can disable '00_index.txt' creation in Options.)";

using FilterLists = std::unordered_map<std::string, std::vector<std::size_t>>;

std::size_t firstFrom(const FilterLists& lists, const std::string& key, std::size_t from,
                      std::size_t none) {
    auto found = lists.find(key);
    if (found == lists.end())
        return none;
    auto it = std::lower_bound(found->second.begin(), found->second.end(), from);
    return it == found->second.end() ? none : *it;
}

// The saves one after another are a chain of filters over the index's lines: the nth
// save's rewrite reads what the saves before it wrote, its entry first. Filter n drops
// the entries whose head names the nth target; the first filter also drops empty lines
// and the entries of items gone from the folder (unless the head is the last line),
// which leaves none for the later filters. The nth entry enters after filter n. Each
// filter is dropping or keeping the lines after the last head it saw; a line touches
// only the filters that change for it.
class EntryChain {
public:
    explicit EntryChain(const std::vector<IndexChange>& changes) : m_count(changes.size()) {
        for (std::size_t n = 0; n < changes.size(); ++n) {
            const IndexName name(changes[n].targetFile);
            m_byName[name.upper()].push_back(n);
            if (name.isUtf8Name())
                m_byUtf8Name[name.upper()].push_back(n);
        }
    }

    // A line of the old index, which enters at the first filter; `gone` for a head
    // whose item has left the folder and that is not the last line.
    void pushOld(std::string_view line, bool gone, AtomicFile& out) {
        if (isContinuation(line))
            return pushContinuation(line, 0, out);
        if (line.empty() || gone) {
            setDropping(0, gone);
            return;
        }
        pushHead(line, 0, out);
    }

    // A line of the nth save's entry, which enters after filter n.
    void pushEntry(std::string_view line, std::size_t n, AtomicFile& out) {
        if (isContinuation(line))
            pushContinuation(line, n + 1, out);
        else
            pushHead(line, n + 1, out);
    }

    bool wroteAny() const { return m_wrote; }

private:
    void pushHead(std::string_view head, std::size_t from, AtomicFile& out) {
        const std::size_t to = firstMatch(head, from);
        m_dropping.erase(m_dropping.lower_bound(from), m_dropping.lower_bound(to));
        if (to < m_count)
            m_dropping.insert(to);
        else
            write(head, out);
    }

    void pushContinuation(std::string_view line, std::size_t from, AtomicFile& out) {
        if (m_dropping.lower_bound(from) == m_dropping.end())
            write(line, out);
    }

    void setDropping(std::size_t filter, bool dropping) {
        if (dropping)
            m_dropping.insert(filter);
        else
            m_dropping.erase(filter);
    }

    void write(std::string_view line, AtomicFile& out) {
        out.writeLine(line);
        m_wrote = true;
    }

    // The first filter from `from` on whose target the head names, as IndexName
    // matches: the quoted name or the short form, each as its bytes and, when it is
    // not UTF-8, as the UTF-8 name it reads as (for targets whose names are UTF-8).
    std::size_t firstMatch(std::string_view head, std::size_t from) const {
        std::size_t first = m_count;
        auto consider = [&](std::string_view name) {
            first = std::min(first, firstFrom(m_byName, upperCase(name), from, m_count));
            if (!isUtf8(name))
                first = std::min(
                    first, firstFrom(m_byUtf8Name, upperCase(decodeFileText(name)), from, m_count));
        };
        if (isQuoted(head) && head.size() >= 2)
            consider(head.substr(1, head.size() - 2));
        consider(shortFormName(head));
        return first;
    }

    std::size_t m_count;
    FilterLists m_byName, m_byUtf8Name;
    std::set<std::size_t> m_dropping;  // the filters dropping the lines they see now
    bool m_wrote = false;
};

// The nth entry, as the nth save writes it, enters after filter n; the last save's
// entry comes first in the file.
void pushNewEntries(const std::vector<IndexChange>& changes, EntryChain& chain, AtomicFile& out) {
    for (std::size_t n = changes.size(); n-- > 0;) {
        if (!changes[n].description)
            continue;
        const std::string text = entryText(changes[n].targetFile, *changes[n].description) + "\r\n";
        for (std::string_view line : splitLines(text))
            chain.pushEntry(line, n, out);
    }
}

std::error_code pushOldLines(LineReader& reader, const std::string& folder, EntryChain& chain,
                             AtomicFile& out) {
    std::string line;
    while (reader.next(line)) {
        const std::string_view item = isContinuation(line) ? "" : itemName(line);
        const bool gone = !item.empty() && !reader.atEnd() && !itemExists(folder, item);
        chain.pushOld(line, gone, out);
    }
    return reader.error();
}

std::error_code rewriteIndex(const std::string& folder, const std::vector<IndexChange>& changes) {
    const std::string indexFile = folder + "00_index.txt";
    RegularFile old;
    std::error_code ec = old.open(indexFile);
    if (ec == std::errc::no_such_file_or_directory)
        ec = {};
    const bool hadIndex = old.isOpen();
    LineReader reader(std::move(old));
    AtomicFile out(indexFile);
    if (!ec)
        ec = out.open(reader.file());
    EntryChain chain(changes);
    if (!ec)
        pushNewEntries(changes, chain, out);
    if (!ec && hadIndex)
        ec = pushOldLines(reader, folder, chain, out);
    if (!ec)
        ec = out.commit();
    if (ec) {
        out.discard();
        return ec;
    }
    return chain.wroteAny() ? std::error_code() : removeFile(indexFile);
}

// An item that others may not read gets no entry where they may look: its save removes
// the old entry and writes none, as the single save does.
std::vector<IndexChange> withHiddenItemsLeftOut(const std::string& folder,
                                                std::vector<IndexChange> changes) {
    for (IndexChange& change : changes) {
        if (change.description && hiddenFromOthers(folder, change.targetFile))
            change.description.reset();
    }
    return changes;
}

}  // namespace

WriteResult update00IndexFileBatch(const std::string& folder,
                                   const std::vector<IndexChange>& changes, Prompter& prompter) {
    FolderLock lock;
    std::error_code ec = lock.acquire(folder, kFolderLockTimeout);
    if (!ec) {
        const std::string olderIndex = folder + std::string(kOlderIndexName);
        if (fileExists(olderIndex))
            (void)renameNoReplace(olderIndex, folder + "00_index.txt");
        ec = rewriteIndex(folder, withHiddenItemsLeftOut(folder, changes));
    }
    if (ec) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
