// The work GNOME Files has the module do when it lists a folder with the Description
// column shown: each entry's file object made and asked about as the folder is read,
// one info request per entry, until all completed and every column value counted.
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
    InfoRequests requests;
    std::vector<TestFileInfo*> items;
    bool inProgress = true;
    while (const char* name = g_dir_read_name(dir)) {
        items.push_back(newTestFileInfo(std::string(argv[2]) + "/" + name));
        inProgress = requests.ask(items.back()) && inProgress;
    }
    g_dir_close(dir);
    const bool done = requests.waitForAll(600) && inProgress;
    std::size_t described = 0, set = 0;
    for (TestFileInfo* item : items) {
        const std::string value = columnValue(item);
        set += value != "(not set)";
        described += value != "(not set)" && !value.empty();
    }
    std::cout << described << '\n';
    return done && set == items.size() ? 0 : 1;
}
