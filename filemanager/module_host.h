#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>
#include <vector>

#include "filemanager/test_file_info.h"

// GNOME Files' side of a module, for the harness and the benchmark: loads the built
// module through its entry points, makes its provider objects, and asks its info
// provider about items as the file manager does.

// Loads the module once per process; false, with GModule's reason on standard error,
// when it cannot be loaded.
bool loadNautilusModule(const std::string& path);

// The loaded module's object that implements the interface, or nullptr.
GObject* moduleProvider(GType interfaceType);

// Runs the main context until `done` or the time passed; whether it was done.
bool runUntil(const std::function<bool()>& done, int seconds = 5);

// Info requests made as the file manager makes them for a folder: one at a time, the
// next once the last one completed (at once, or later on the main context).
class InfoRequests {
public:
    InfoRequests();
    ~InfoRequests();
    InfoRequests(const InfoRequests&) = delete;
    InfoRequests& operator=(const InfoRequests&) = delete;

    // Asks about the item and runs the main context until the request completed; false
    // when it did not within the time.
    bool ask(TestFileInfo* item, int seconds = 5);

    // The two halves of ask(), for the file manager's other work in between.
    void start(TestFileInfo* item);
    bool finish(int seconds);

    // How many requests the provider completed at once, without a read of its own.
    std::size_t completedAtOnce() const { return m_atOnce; }

private:
    GObject* m_provider;
    GClosure* m_complete;
    std::size_t m_started = 0;
    std::size_t m_completions = 0;
    std::size_t m_atOnce = 0;
};

// Asks the info provider about every item in turn; false when any was not answered in
// time.
bool updateFileInfo(const std::vector<TestFileInfo*>& items, int seconds = 5);

// The column's attribute of the item; "(not set)" when the provider set none.
std::string columnValue(TestFileInfo* item);
