// The work GNOME Files has the module do when it lists a folder with the Description
// column shown: each entry's file object made as the folder is read, and one info
// request per entry, one at a time, the next once the last one completed, as GNOME
// Files keeps one request of a folder in flight, until every column value is counted.
//   nautilus_column_bench MODULE FOLDER
// Prints the number of entries whose column is not empty; exit status 1 when any
// request failed or any entry was left without its column value.
// The file objects are kept to the end, as the file manager keeps them while the
// folder is shown: their freeing is the file manager's work, not the module's.
#include <iostream>

#include "filemanager/module_host.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: nautilus_column_bench MODULE FOLDER\n";
        return 2;
    }
    if (!loadNautilusModule(argv[1]))
        return 1;
    GDir* dir = g_dir_open(argv[2], 0, nullptr);
    if (!dir)
        return 1;
    // The first entry is asked about as soon as it is made, the others once the folder
    // is read, as GNOME Files starts on the first part of a folder while it reads on.
    InfoRequests requests;
    std::vector<TestFileInfo*> items;
    while (const char* name = g_dir_read_name(dir)) {
        items.push_back(newTestFileInfo(std::string(argv[2]) + "/" + name));
        if (items.size() == 1)
            requests.start(items.front());
    }
    g_dir_close(dir);
    bool done = requests.finish(600);
    for (std::size_t i = 1; i < items.size() && done; ++i)
        done = requests.ask(items[i], 600);
    std::size_t described = 0, set = 0;
    for (TestFileInfo* item : items) {
        const std::string value = columnValue(item);
        set += value != "(not set)";
        described += value != "(not set)" && !value.empty();
    }
    std::cout << described << '\n';
    return done && set == items.size() ? 0 : 1;
}
