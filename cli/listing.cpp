#include "cli/listing.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <iterator>
#include <list>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#include "cli/json_lines.h"
#include "cli/transfer_staging.h"
#include "platform/code_page.h"
#include "platform/files.h"

namespace {

constexpr std::string_view kExportedSuffix = ".DESCRIPTION";

// The entries of a folder go from the thread that reads them to the caller in parts of
// this many; a folder read ahead holds at most about twice as many.
constexpr std::size_t kPartEntries = 512;

bool isExportedFileName(const std::string& name) {
    return name.size() > kExportedSuffix.size() &&
           upperCase(std::string_view(name).substr(name.size() - kExportedSuffix.size())) ==
               kExportedSuffix;
}

// A folder's entries in byte order of their names. Most names differ in their first
// eight bytes, which compare as one number; moving a pointer costs less than moving
// an item.
struct SortKey {
    std::uint64_t leading;
    const FolderItem* item;

    bool operator<(const SortKey& other) const {
        return leading != other.leading ? leading < other.leading : item->name < other.item->name;
    }
};

// The first eight bytes of the name, the first in the highest place; shorter names are
// padded with zero bytes, which sort before every byte a name can hold.
std::uint64_t leadingBytes(std::string_view name) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 8; ++i)
        value = value << 8 | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0u);
    return value;
}

}  // namespace

void writeJsonLine(Session& session, const ListedEntry& entry) {
    session.streams.out << jsonLine({entry.path, entry.text, sourceName(entry.found.status)})
                        << '\n';
}

namespace {

// What one thread needs to read folders: its own checks and store readers.
class FolderReader {
public:
    FolderReader(const DataPaths& data, FailsafeScan& failsafe, bool mayEnterFolders)
        : m_data(data), m_failsafe(failsafe), m_reader(failsafe, mayEnterFolders) {}

    // Calls `each` for every entry of the folder, which may move from it; false when the
    // folder cannot be read.
    bool read(const std::string& folder, const std::function<void(ListedEntry&)>& each);

private:
    DataPaths m_data;
    FailsafeScan& m_failsafe;
    EntryChecker m_checker;
    BatchReader m_reader;
};

}  // namespace

bool FolderReader::read(const std::string& folder, const std::function<void(ListedEntry&)>& each) {
    std::vector<FolderItem> items;
    if (readFolder(folder, items))
        return false;
    std::vector<SortKey> sorted;
    sorted.reserve(items.size());
    for (const FolderItem& item : items)
        sorted.push_back({leadingBytes(item.name), &item});
    std::sort(sorted.begin(), sorted.end());
    // The reader looks among the names for exported files only.
    std::vector<std::string> names;
    for (const SortKey& key : sorted) {
        if (isExportedFileName(key.item->name))
            names.push_back(key.item->name);
    }
    m_reader.enterFolder(folder, names);
    ListedEntry entry;
    for (const SortKey& key : sorted) {
        const FolderItem& n = *key.item;
        entry.path.assign(folder).append(n.name);
        // Another entry's exported file: opening it would open that entry. A copy's
        // staging folder is not an entry of anyone's.
        if (isExportedFileName(n.name) || isStagingFolderName(n.name))
            continue;
        // A name the editor refuses has no description.
        auto target = m_checker.pathsOf(entry.path, n.isLink, m_data);
        entry.name = n.name;
        entry.isFolder = n.isFolder;
        entry.found =
            target ? findDescription(*target, m_failsafe.file(), m_reader, CommentCheck::Skip)
                   : FoundDescription();
        entry.text = printedText(entry.found);
        each(entry);
    }
    return true;
}

Listing::Listing(Session& session, const std::string& top)
    : m_session(session), m_failsafe(session.failsafeFile(), top) {}

bool Listing::listFolder(const std::string& folder,
                         const std::function<void(const ListedEntry&)>& each) {
    FolderReader reader(m_session.state.data, m_failsafe, true);
    return reader.read(folder, each);
}

namespace {

// The folders of a tree in the order their entries are handed out: a folder, then
// the trees of its folders in byte order of their names. A folder's folders join the
// order, right after it, once it has been read.
struct TreeOrder {
    enum class Stage { Waiting, Reading, Read };
    struct Folder {
        explicit Folder(std::string folderPath) : path(std::move(folderPath)) {}
        std::string path;
        Stage stage = Stage::Waiting;
        bool readable = true;
        std::vector<ListedEntry> entries;  // read and not yet handed out
    };

    // The first folder that no thread reads yet among the `ahead` first; end() if none.
    std::list<Folder>::iterator nextToRead(std::size_t ahead) {
        auto it = folders.begin();
        for (std::size_t i = 0; i < ahead && it != folders.end(); ++i, ++it) {
            if (it->stage == Stage::Waiting)
                return it;
        }
        return folders.end();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::list<Folder> folders;  // from the one handed out next
    bool stopped = false;
};

// Ends the readers when the caller leaves, whether done or by an exception.
struct StopReaders {
    TreeOrder& order;
    ~StopReaders() {
        std::lock_guard lock(order.mutex);
        order.stopped = true;
        order.changed.notify_all();
    }
};

// One walk through a tree: the reader threads read the next few folders ahead while the
// calling thread hands out the entries of the first, in the tree's order.
class TreeWalk {
public:
    using Each = std::function<void(const ListedEntry&)>;

    TreeWalk(const DataPaths& data, FailsafeScan& failsafe, const std::string& top,
             std::size_t ahead)
        : m_data(data), m_failsafe(failsafe), m_ahead(ahead) {
        m_order.folders.emplace_back(top);
    }

    // Hands out every entry of the tree to `each`; false when a folder could not be read.
    bool run(std::size_t readers, const Each& each);

private:
    using FolderIt = std::list<TreeOrder::Folder>::iterator;

    std::vector<std::jthread> startReaders(std::size_t readers);
    void readFolders();
    void readAhead(FolderReader& reader, std::unique_lock<std::mutex>& lock, FolderIt next);
    template <class Deliver>
    void read(FolderReader& reader, std::unique_lock<std::mutex>& lock, FolderIt next,
              Deliver deliver);
    bool handOutAll(FolderReader* here, const Each& each);
    static void handOut(std::vector<ListedEntry>& part, std::unique_lock<std::mutex>& lock,
                        const Each& each);

    const DataPaths m_data;
    FailsafeScan& m_failsafe;
    const std::size_t m_ahead;
    TreeOrder m_order;
};

bool TreeWalk::run(std::size_t readers, const Each& each) {
    std::vector<std::jthread> threads = startReaders(readers);
    // Without threads, this one reads each folder as its turn comes.
    std::optional<FolderReader> here;
    if (threads.empty())
        here.emplace(m_data, m_failsafe, true);
    // Declared after the threads, so that they are told to stop before they are joined.
    StopReaders stop{m_order};
    return handOutAll(here ? &*here : nullptr, each);
}

std::vector<std::jthread> TreeWalk::startReaders(std::size_t readers) {
    std::vector<std::jthread> threads;
    try {
        for (std::size_t i = 0; i < readers; ++i)
            threads.emplace_back([this] { readFolders(); });
    } catch (const std::system_error&) {
        // Fewer threads read; with none, the calling thread reads.
    }
    return threads;
}

void TreeWalk::readFolders() {
    // Each thread enters the folders it reads; without a current folder of its own, it
    // names the entries by their full paths.
    FolderReader reader(m_data, m_failsafe, ownCurrentFolder());
    std::unique_lock lock(m_order.mutex);
    while (!m_order.stopped && !m_order.folders.empty()) {
        auto next = m_order.nextToRead(m_ahead);
        if (next == m_order.folders.end())
            m_order.changed.wait(lock);
        else
            readAhead(reader, lock, next);
    }
}

// A reader thread's part waits, while the folder holds as many entries already, for the
// caller to take them.
void TreeWalk::readAhead(FolderReader& reader, std::unique_lock<std::mutex>& lock, FolderIt next) {
    read(reader, lock, next, [&](std::vector<ListedEntry>& part) {
        m_order.changed.wait(
            lock, [&] { return m_order.stopped || next->entries.size() < kPartEntries; });
        std::move(part.begin(), part.end(), std::back_inserter(next->entries));
        part.clear();
        m_order.changed.notify_all();
    });
}

// Reads the folder, with the lock held on entry and on return, handing its entries over
// in parts: a wide folder is never held whole. `deliver` takes each part with the lock
// held. The folder's folders join the order right after it.
template <class Deliver>
void TreeWalk::read(FolderReader& reader, std::unique_lock<std::mutex>& lock, FolderIt next,
                    Deliver deliver) {
    next->stage = TreeOrder::Stage::Reading;
    lock.unlock();
    std::vector<ListedEntry> part;
    std::vector<std::string> subfolders;
    const bool readable = reader.read(next->path, [&](ListedEntry& entry) {
        if (entry.isFolder)
            subfolders.push_back(entry.path + "/");
        part.push_back(std::move(entry));
        if (part.size() < kPartEntries)
            return;
        lock.lock();
        deliver(part);
        lock.unlock();
    });
    lock.lock();
    deliver(part);
    next->readable = readable;
    next->stage = TreeOrder::Stage::Read;
    const auto after = std::next(next);
    for (std::string& path : subfolders)
        m_order.folders.emplace(after, std::move(path));
    m_order.changed.notify_all();
}

// Takes the entries of the first folder in the order as they come; with `here`, this
// thread reads that folder itself and hands each part out at once.
bool TreeWalk::handOutAll(FolderReader* here, const Each& each) {
    bool ok = true;
    std::unique_lock lock(m_order.mutex);
    while (!m_order.folders.empty()) {
        auto front = m_order.folders.begin();
        if (here && front->stage == TreeOrder::Stage::Waiting)
            read(*here, lock, front,
                 [&](std::vector<ListedEntry>& part) { handOut(part, lock, each); });
        m_order.changed.wait(lock, [&] {
            return !front->entries.empty() || front->stage == TreeOrder::Stage::Read;
        });
        std::vector<ListedEntry> part = std::move(front->entries);
        front->entries.clear();
        ok = front->stage != TreeOrder::Stage::Read || front->readable ? ok : false;
        if (part.empty())
            m_order.folders.pop_front();
        m_order.changed.notify_all();
        handOut(part, lock, each);
    }
    return ok;
}

// Calls `each` for the part's entries without the lock.
void TreeWalk::handOut(std::vector<ListedEntry>& part, std::unique_lock<std::mutex>& lock,
                       const Each& each) {
    lock.unlock();
    for (const ListedEntry& entry : part)
        each(entry);
    part.clear();
    lock.lock();
}

}  // namespace

std::size_t Listing::defaultReaders() {
    // Reading the entries' attributes is the kernel's work, which runs on every
    // processor at once.
    return std::clamp(std::thread::hardware_concurrency(), 1u, 4u);
}

bool Listing::listTree(const std::string& folder,
                       const std::function<void(const ListedEntry&)>& each, std::size_t readers) {
    TreeWalk walk(m_session.state.data, m_failsafe, folder, readers + 1);
    return walk.run(readers, each);
}
