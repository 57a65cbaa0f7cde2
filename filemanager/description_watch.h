#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// Watches the folders of the items asked about, and the failsafe database. When a
// folder's index or descript.ion changes, each item asked about in that folder is
// handed to `stale`; when NAME.description or the attributes of NAME change, the item
// NAME; when the database changes, every item asked about. Changes close together are
// handed over once. A folder seen for the first time is read ahead into columnCache(),
// and whatever changes is forgotten there at once. Main context only.
class DescriptionWatch {
public:
    using Stale = std::function<void(GFile* item)>;
    explicit DescriptionWatch(Stale stale);
    ~DescriptionWatch();
    DescriptionWatch(const DescriptionWatch&) = delete;
    DescriptionWatch& operator=(const DescriptionWatch&) = delete;

    // The item at the local path was asked about: watch its folder from now on.
    void asked(const std::string& path);

    // The item asked about last was not among what was read ahead: the file manager may
    // be asking about the whole folder again (shown anew), so it is read ahead again,
    // unless that is under way, and at most once in kReadAheadAgainMs.
    void missed();
    static constexpr gint64 kReadAheadAgainMs = 1000;

private:
    struct Folder {
        GFileMonitor* monitor = nullptr;
        // Asked about; kept as they come, which costs the file manager least, and sorted
        // without repeats when they are looked at.
        std::vector<std::string> names;
        std::size_t tidied = 0;                 // names before this are sorted, without repeats
        std::unordered_set<std::string> stale;  // waiting to be handed over
        bool allStale = false;
        std::uint64_t lastUse = 0;
        gint64 readAhead = 0;  // when it was last read ahead, in monotonic microseconds

        const std::vector<std::string>& askedNames();
        bool wasAsked(const std::string& name);
    };

    static void onFolderChanged(GFileMonitor*, GFile* child, GFile*, GFileMonitorEvent event,
                                gpointer self);
    static void onFailsafeChanged(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent event,
                                  gpointer self);
    static gboolean handOver(gpointer self);
    static void readAhead(const std::string& path, Folder& folder);
    void folderChanged(const std::string& folder, const std::string& name, GFileMonitorEvent event);
    void scheduleHandOver();
    void dropLeastRecent();
    // Starts watching the folder; end() when it cannot be watched.
    std::unordered_map<std::string, Folder>::iterator watchFolder(const std::string& folderPath);
    GFileMonitor* monitor(const std::string& path, bool isFolder, GCallback changed);

    Stale m_stale;
    GFileMonitor* m_failsafe = nullptr;
    std::unordered_map<std::string, Folder> m_folders;
    Folder* m_last = nullptr;  // the folder asked about last, while watched
    std::string m_lastPath;
    guint m_handOver = 0;
    std::uint64_t m_uses = 0;
};
