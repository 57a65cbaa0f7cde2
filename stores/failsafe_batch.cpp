#include "stores/failsafe_batch.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/folder_lock.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "stores/failsafe_db.h"

namespace {

constexpr std::string_view kBeginPrefix = "Veskor failsafe DB 1.7 BEGIN ";
constexpr std::string_view kEndPrefix = "Veskor failsafe DB 1.7 END ";
constexpr std::string_view kUpdateFailed = "Error: Problem while updating filesafe DB.";

bool isAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The saves one after another are a chain of filters over the database's lines: the
// nth save's rewrite reads what the saves before it wrote, its record first. Filter n
// drops the records of the nth key (a begin line that is the last of its input stays),
// and the nth record enters the chain after filter n. A line goes through the chain
// in one call, touching only the filters that act on it, so the whole rewrite is one
// pass over the old lines whatever the number of saves.
class RecordChain {
public:
    explicit RecordChain(const std::vector<FailsafeChange>& changes) {
        for (std::size_t n = 0; n < changes.size(); ++n) {
            m_keys.push_back(upperCase(changes[n].targetFileFullPathname));
            m_filtersOf[m_keys.back()].push_back(n);
        }
    }

    // Feeds one line into the chain at filter `from`; what leaves it goes to `out`.
    void push(std::string line, std::size_t from, AtomicFile& out) {
        const std::size_t begins = firstBeginMatch(line, from);
        auto busy = m_busy.lower_bound(from);
        if (busy != m_busy.end() && busy->first <= begins)
            return skipAt(busy, line);
        if (begins < m_keys.size())
            m_busy[begins] = std::move(line);  // held until the filter's next line
        else
            out.writeLine(line);
    }

    // The input has ended: a begin line still held was the last line of its filter's
    // input and goes on; a record still being skipped swallowed the rest.
    void finish(AtomicFile& out) {
        while (!m_busy.empty()) {
            auto first = m_busy.begin();
            const std::size_t filter = first->first;
            std::optional<std::string> held = std::move(first->second);
            m_busy.erase(first);
            if (held)
                push(std::move(*held), filter + 1, out);
        }
    }

private:
    // A line reaches a filter that holds a begin line or skips a record: the held line
    // was not the last, so its record is skipped, this line with it; an end line of
    // the filter's key ends the record.
    void skipAt(std::map<std::size_t, std::optional<std::string>>::iterator busy,
                std::string_view line) {
        busy->second.reset();
        if (isMarker(line, std::string(kEndPrefix) + m_keys[busy->first]))
            m_busy.erase(busy);
    }

    std::size_t firstMatchOf(const std::string& key, std::size_t from) const {
        auto found = m_filtersOf.find(key);
        if (found == m_filtersOf.end())
            return m_keys.size();
        auto it = std::lower_bound(found->second.begin(), found->second.end(), from);
        return it == found->second.end() ? m_keys.size() : *it;
    }

    // The first filter from `from` on whose key's begin line this is.
    std::size_t firstBeginMatch(std::string_view line, std::size_t from) const {
        if (!line.starts_with(kBeginPrefix))
            return m_keys.size();
        const std::string_view key = line.substr(kBeginPrefix.size());
        std::size_t first = firstMatchOf(std::string(key), from);
        if (!isAscii(key))
            first = std::min(first, firstMatchOf(decodeFileText(key), from));
        return first;
    }

    std::vector<std::string> m_keys;
    std::unordered_map<std::string, std::vector<std::size_t>> m_filtersOf;
    // Filters that hold their key's begin line (a value) or skip its record (nullopt).
    std::map<std::size_t, std::optional<std::string>> m_busy;
};

// The nth record, as the nth save writes it, enters the chain after filter n; the last
// save's record comes first in the file.
void pushNewRecords(const std::vector<FailsafeChange>& changes, RecordChain& chain,
                    AtomicFile& out) {
    for (std::size_t n = changes.size(); n-- > 0;) {
        if (!changes[n].description)
            continue;
        const std::string key = upperCase(changes[n].targetFileFullPathname);
        chain.push(std::string(kBeginPrefix) + key, n + 1, out);
        const std::string text = *changes[n].description + "\r\n";
        for (std::string_view line : splitLines(text))
            chain.push(std::string(line), n + 1, out);
        chain.push(std::string(kEndPrefix) + key, n + 1, out);
    }
}

std::error_code rewriteDatabase(const std::string& file,
                                const std::vector<FailsafeChange>& changes) {
    return rewriteFailsafeFile(file, kFolderLockTimeout,
                               [&](LineReader* old, AtomicFile& out) -> std::error_code {
                                   RecordChain chain(changes);
                                   pushNewRecords(changes, chain, out);
                                   if (old) {
                                       for (std::string line; old->next(line);)
                                           chain.push(std::move(line), 0, out);
                                       if (old->error())
                                           return old->error();
                                   }
                                   chain.finish(out);
                                   return {};
                               });
}

}  // namespace

WriteResult updateFailsafeDBBatch(const std::string& failsafeDBfile,
                                  const std::vector<FailsafeChange>& changes, Prompter& prompter) {
    if (rewriteDatabase(failsafeDBfile, changes)) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
