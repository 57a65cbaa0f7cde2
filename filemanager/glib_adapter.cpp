#include "filemanager/glib_adapter.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <iterator>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "core/startup.h"
#include "platform/environment.h"
#include "platform/files.h"

namespace {

struct Owned {
    void operator()(gpointer p) const { g_free(p); }
};
using GlibText = std::unique_ptr<char, Owned>;

// The editor's folder; the data folder is found from it as the editor finds it.
std::string editorFolder() {
    GlibText found(g_find_program_in_path("veskor"));
    if (!found)
        return "/usr/bin/";
    GlibText folder(g_path_get_dirname(found.get()));
    return std::string(folder.get()) + "/";
}

// Found once for the process, by whichever thread asks first.
const DataPaths& dataPaths() {
    static const DataPaths data = [] {
        SharedState state;
        SilentPrompter silent;
        StartupWindow noWindow;
        (void)runStartup(state, {editorFolder(), appDataFolder()}, silent, noWindow);
        return state.data;
    }();
    return data;
}

// What a request asks of the worker: an item's description, or, for the folder at its
// path, the listing and shared stores or the column texts of every item.
enum class Work { Item, Prepare, ReadAhead };

// One request of the file manager's, from the main context that made it.
struct ReadRequest {
    ReadRequest(std::string itemPath, DescriptionReady whenReady,
                const std::atomic<bool>* cancelFlag, Work asked = Work::Item,
                std::size_t firstEntry = 0)
        : work(asked),
          first(firstEntry),
          path(std::move(itemPath)),
          ready(std::move(whenReady)),
          cancel(cancelFlag),
          context(g_main_context_ref_thread_default()) {}
    ~ReadRequest() { g_main_context_unref(context); }
    ReadRequest(const ReadRequest&) = delete;
    ReadRequest& operator=(const ReadRequest&) = delete;

    bool cancelled() const { return cancel && cancel->load(); }

    Work work;
    std::size_t first;  // of the folder's entries read ahead
    bool more = false;  // entries after them are to be read ahead too
    std::string path;
    DescriptionReady ready;
    const std::atomic<bool>* cancel;
    GMainContext* context;
    ItemDescription item;
};

using Batch = std::vector<std::unique_ptr<ReadRequest>>;

// Requests read at most in one go.
constexpr std::size_t kBatchSize = 256;

// The answers of one batch go back to their main context together.
gboolean deliver(gpointer data) {
    for (auto& request : *static_cast<Batch*>(data)) {
        const bool cancelled = request->cancelled();
        request->ready(cancelled ? ItemDescription() : request->item, cancelled);
    }
    return G_SOURCE_REMOVE;
}

void deliverLater(Batch batch) {
    // Requests come from one main context in practice; any others get their own turn.
    while (!batch.empty()) {
        GMainContext* context = batch.front()->context;
        auto* same = new Batch;
        std::erase_if(batch, [&](std::unique_ptr<ReadRequest>& request) {
            if (request->context != context)
                return false;
            same->push_back(std::move(request));
            return true;
        });
        // A source of the context's own, run by its loop: g_main_context_invoke would run
        // the answers on this thread whenever no thread held the context at that moment.
        GSource* source = g_idle_source_new();
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        g_source_set_callback(source, deliver, same,
                              [](gpointer done) { delete static_cast<Batch*>(done); });
        g_source_attach(source, context);
        g_source_unref(source);
    }
}

// One worker reads every request, taking whatever has queued up as one batch: the
// folder's shared files are then checked once for all of a folder's items.
class ReadQueue {
public:
    void push(std::unique_ptr<ReadRequest> request) {
        std::lock_guard lock(m_mutex);
        if (!m_started && !start()) {
            if (request->work != Work::Item)
                return;
            Batch alone;
            alone.push_back(std::move(request));
            deliverLater(std::move(alone));
            return;
        }
        // The worker waits only on an empty queue; a folder's many requests wake it once.
        if (m_queue.empty())
            m_ready.notify_one();
        m_queue.push_back(std::move(request));
    }

    void prepare() {
        std::lock_guard lock(m_mutex);
        if (!m_started)
            (void)start();
    }

private:
    bool start() {
        try {
            std::thread(&ReadQueue::run, this).detach();
            m_started = true;
        } catch (const std::system_error&) {
            // No thread to read on: the cells stay empty rather than block the window.
        }
        return m_started;
    }

    [[noreturn]] void run() {
        // Items are read by their names in their folder where the thread may have a
        // current folder of its own; the file manager's threads keep theirs.
        const bool ownFolder = ownCurrentFolder();
        std::unique_ptr<FolderDescriptions> descriptions = reader(ownFolder);
        for (;;) {
            Batch batch = next();
            // The items first, which the file manager waits for; the folders' work after.
            Batch folders;
            for (auto& request : batch) {
                if (request->work != Work::Item)
                    folders.push_back(std::move(request));
            }
            std::erase(batch, nullptr);
            if (!descriptions)
                descriptions = reader(ownFolder);
            if (descriptions)
                read(*descriptions, batch);
            deliverLater(std::move(batch));
            for (auto& request : folders) {
                if (descriptions)
                    readFolder(*descriptions, *request);
                // A folder is read ahead in parts, each queued after the requests that
                // came meanwhile: those do not wait for the whole folder.
                if (request->more)
                    push(std::make_unique<ReadRequest>(request->path, nullptr, nullptr,
                                                       Work::ReadAhead,
                                                       request->first + kBatchSize));
            }
        }
    }

    // Waits for requests and takes a bounded batch of them: the first answers are shown
    // while the rest are read.
    Batch next() {
        std::unique_lock lock(m_mutex);
        m_ready.wait(lock, [this] { return !m_queue.empty(); });
        const auto end =
            m_queue.begin() + static_cast<std::ptrdiff_t>(std::min(m_queue.size(), kBatchSize));
        Batch batch(std::make_move_iterator(m_queue.begin()), std::make_move_iterator(end));
        m_queue.erase(m_queue.begin(), end);
        return batch;
    }

    // The thread's reader; nullptr, and the cells stay empty, when the start-up failed.
    static std::unique_ptr<FolderDescriptions> reader(bool mayEnterFolders) {
        try {
            return std::make_unique<FolderDescriptions>(dataPaths(), mayEnterFolders);
        } catch (...) {
            return nullptr;
        }
    }

    static void read(FolderDescriptions& descriptions, Batch& batch) {
        std::vector<std::string> paths;
        std::vector<ReadRequest*> asked;
        for (auto& request : batch) {
            if (!request->cancelled() && !request->path.empty()) {
                paths.push_back(std::move(request->path));
                asked.push_back(request.get());
            }
        }
        try {
            std::vector<ItemDescription> items = descriptions.describe(paths);
            for (std::size_t i = 0; i < asked.size(); ++i)
                asked[i]->item = std::move(items[i]);
        } catch (...) {
            // Out of memory or a fault in a store: the cells stay empty.
        }
    }

    static void readFolder(FolderDescriptions& descriptions, ReadRequest& request) {
        try {
            if (request.work == Work::Prepare) {
                descriptions.prepare(request.path);
                return;
            }
            const std::uint64_t since = columnCache().mark();
            std::vector<std::pair<std::string, std::string>> columns;
            for (auto& [name, item] :
                 descriptions.describeFolder(request.path, request.first, kBatchSize))
                columns.emplace_back(std::move(name), columnText(std::move(item)));
            const bool whole = columns.size() < kBatchSize;
            request.more = columnCache().keep(request.path, since, std::move(columns)) && !whole;
            if (!request.more)
                columnCache().setReading(request.path, false);
        } catch (...) {
            // The items' own requests read them then.
            request.more = false;
            if (request.work == Work::ReadAhead)
                columnCache().setReading(request.path, false);
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<std::unique_ptr<ReadRequest>> m_queue;
    bool m_started = false;
};

// Made once and never destroyed: its thread may still read while the process ends.
ReadQueue& readQueue() {
    static auto* queue = new ReadQueue;
    return *queue;
}

}  // namespace

std::string pathOf(GFile* item) {
    const char* path = g_file_is_native(item) ? g_file_peek_path(item) : nullptr;
    return path ? std::string(path) : std::string();
}

std::string failsafeDatabase() {
    return dataPaths().failsafeDBpath + "ver1.7.dat";
}

void startReading() {
    readQueue().prepare();
}

void readDescriptionAsync(std::string path, const std::atomic<bool>* cancelled,
                          DescriptionReady ready) {
    readQueue().push(std::make_unique<ReadRequest>(std::move(path), std::move(ready), cancelled));
}

void prepareFolder(std::string path) {
    readQueue().push(
        std::make_unique<ReadRequest>(std::move(path), nullptr, nullptr, Work::Prepare));
}

void readAheadColumns(std::string path) {
    columnCache().setReading(path, true);
    readQueue().push(
        std::make_unique<ReadRequest>(std::move(path), nullptr, nullptr, Work::ReadAhead));
}

ColumnCache& columnCache() {
    static auto* cache = new ColumnCache;
    return *cache;
}

std::string displayText(std::string_view text) {
    // Almost every text is valid already: it is then taken as it is, without a copy.
    if (g_utf8_validate_len(text.data(), text.size(), nullptr))
        return std::string(text);
    GlibText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid ? std::string(valid.get()) : std::string();
}

std::string columnText(const ItemDescription& item) {
    return displayText(std::string_view(item.text).substr(0, item.text.find('\n')));
}

std::string columnText(ItemDescription&& item) {
    // Most descriptions are one valid line: taken as they are, without a copy.
    if (item.text.find('\n') == std::string::npos &&
        g_utf8_validate_len(item.text.data(), item.text.size(), nullptr))
        return std::move(item.text);
    return columnText(item);
}

bool startEditor(const std::string& path) {
    const char* chosen = std::getenv("VESKOR_EDITOR_PROGRAM");
    const std::string program = chosen && *chosen ? chosen : "veskor";
    if (path.empty())
        return false;
    char* argv[] = {const_cast<char*>(program.c_str()), const_cast<char*>(path.c_str()), nullptr};
    // Without a request to reap it, GLib leaves nothing behind: the editor lives on its own.
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                G_SPAWN_STDERR_TO_DEV_NULL);
    GError* error = nullptr;
    const bool started =
        g_spawn_async(nullptr, argv, nullptr, flags, nullptr, nullptr, nullptr, &error);
    g_clear_error(&error);
    return started;
}
