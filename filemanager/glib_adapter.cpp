#include "filemanager/glib_adapter.h"

#include <cstdlib>

#include "core/startup.h"
#include "platform/environment.h"

namespace {

struct Owned {
    void operator()(gpointer p) const { g_free(p); }
};
using GlibText = std::unique_ptr<char, Owned>;

std::string pathOf(GFile* file) {
    GlibText path(g_file_get_path(file));
    return path ? std::string(path.get()) : std::string();
}

struct ReadJob {
    std::string path;
    DescriptionReady ready;
    ItemDescription item;
};

void readOnWorker(GTask* task, gpointer, gpointer data, GCancellable* cancellable) {
    auto* job = static_cast<ReadJob*>(data);
    if (!g_cancellable_is_cancelled(cancellable) && !job->path.empty()) {
        try {
            job->item = sharedDescriptions().describe(job->path);
        } catch (...) {
            // Out of memory or a fault in a store: the cell stays empty.
            job->item = {};
        }
    }
    g_task_return_boolean(task, TRUE);
}

void readFinished(GObject*, GAsyncResult* result, gpointer) {
    GTask* task = G_TASK(result);
    auto* job = static_cast<ReadJob*>(g_task_get_task_data(task));
    const bool cancelled = !g_task_propagate_boolean(task, nullptr);
    job->ready(cancelled ? ItemDescription() : job->item, cancelled);
}

// The editor's folder; the data folder is found from it as the editor finds it.
std::string editorFolder() {
    GlibText found(g_find_program_in_path("veskor"));
    if (!found)
        return "/usr/bin/";
    GlibText folder(g_path_get_dirname(found.get()));
    return std::string(folder.get()) + "/";
}

DataPaths dataPaths() {
    SharedState state;
    SilentPrompter silent;
    StartupWindow noWindow;
    (void)runStartup(state, {editorFolder(), appDataFolder()}, silent, noWindow);
    return state.data;
}

}  // namespace

FolderDescriptions& sharedDescriptions() {
    static FolderDescriptions descriptions(dataPaths());
    return descriptions;
}

std::string failsafeDatabase() {
    static const std::string file = dataPaths().failsafeDBpath + "ver1.7.dat";
    return file;
}

void readDescriptionAsync(GFile* item, GCancellable* cancellable, DescriptionReady ready) {
    GTask* task = g_task_new(nullptr, cancellable, readFinished, nullptr);
    g_task_set_task_data(task, new ReadJob{pathOf(item), std::move(ready), {}},
                         [](gpointer job) { delete static_cast<ReadJob*>(job); });
    g_task_run_in_thread(task, readOnWorker);
    g_object_unref(task);
}

std::string displayText(const std::string& text) {
    GlibText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid ? std::string(valid.get()) : std::string();
}

std::string columnText(const ItemDescription& item) {
    return displayText(item.text.substr(0, item.text.find('\n')));
}

bool startEditor(GFile* item) {
    const std::string path = pathOf(item);
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
