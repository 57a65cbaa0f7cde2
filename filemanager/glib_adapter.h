#pragma once

#include <gio/gio.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "cli/folder_descriptions.h"
#include "filemanager/column_cache.h"

// What every GLib-based file-manager module shares: the descriptions read on a worker
// thread and handed back on the calling thread's main context, the editor started
// detached on an item, and the watch that tells which items show a stale description
// after a store shared by several items changed. A module is a thin adapter of its
// library's calls over these. Nothing here throws, blocks the main context on a file,
// or shows a message: a file manager dies with its extensions.

// Called on the main context of the thread that asked; `cancelled` when the caller's
// flag was set meanwhile (the answer is then empty).
using DescriptionReady = std::function<void(const ItemDescription& item, bool cancelled)>;

// A local item's path; "" for any other (no path on this machine).
[[nodiscard]] std::string pathOf(GFile* item);

// Starts the worker thread and what it finds once for the process (the user's data
// folder), ahead of the first request, so that the first folder opened does not wait
// for them. Requests start it otherwise.
void startReading();

// Reads the description of the item at the local path on a worker thread. The flag,
// when given, must live until `ready` was called; setting it cancels the request.
void readDescriptionAsync(std::string path, const std::atomic<bool>* cancelled,
                          DescriptionReady ready);

// Lists the folder at the local path and reads its shared stores on the worker thread
// ahead of its items' requests, which then only check them for changes.
void prepareFolder(std::string path);

// Reads the column text of every item of the folder at the local path on the worker
// thread, into columnCache(): for a file manager that asks about one item at a time.
// Only after the folder's watch started, which forgets what changes from then on.
void readAheadColumns(std::string path);

// What was read ahead; made once and never destroyed, as the worker may still use it.
[[nodiscard]] ColumnCache& columnCache();

// The description's first line, valid UTF-8 whatever the stores held.
[[nodiscard]] std::string columnText(const ItemDescription& item);
[[nodiscard]] std::string columnText(ItemDescription&& item);

// Valid UTF-8 for display.
[[nodiscard]] std::string displayText(std::string_view text);

// Starts the editor on the item, detached; false when it could not be started. The
// program is `veskor` on the PATH, or the one that VESKOR_EDITOR_PROGRAM names.
bool startEditor(const std::string& path);

// The failsafe database of the user's data folder, as the editor finds it.
[[nodiscard]] std::string failsafeDatabase();
