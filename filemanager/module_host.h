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

// Info requests made one by one, as the file manager makes them while a folder loads,
// each completion counted when the main context runs.
class InfoRequests {
public:
    InfoRequests();
    ~InfoRequests();
    InfoRequests(const InfoRequests&) = delete;
    InfoRequests& operator=(const InfoRequests&) = delete;

    // Asks about the item without waiting; false when the provider answered it
    // synchronously (the read must leave the main thread).
    bool ask(TestFileInfo* item);

    // Runs the main context until every request asked so far reported completion.
    bool waitForAll(int seconds);

private:
    GObject* m_provider;
    GClosure* m_complete;
    std::size_t m_asked = 0;
    std::size_t m_completions = 0;
};

// Asks the info provider about every item, then runs the main context until each
// reported completion. False when the provider answered any synchronously (the read
// must leave the main thread) or not all completed in time.
bool updateFileInfo(const std::vector<TestFileInfo*>& items, int seconds = 5);

// The column's attribute of the item; "(not set)" when the provider set none.
std::string columnValue(TestFileInfo* item);
