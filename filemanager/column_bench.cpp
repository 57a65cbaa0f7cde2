// The work GNOME Files has the module do when it lists a folder with the Description
// column shown: one file object and one info request per entry, until all completed.
//   nautilus_column_bench MODULE FOLDER
// Prints the number of entries whose column is not empty; exit status 1 on failure.
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
    std::vector<TestFileInfo*> items;
    while (const char* name = g_dir_read_name(dir))
        items.push_back(newTestFileInfo(std::string(argv[2]) + "/" + name));
    g_dir_close(dir);
    const bool done = updateFileInfo(items, 600);
    std::size_t described = 0;
    for (TestFileInfo* item : items) {
        described += !columnValue(item).empty();
        g_object_unref(item);
    }
    std::cout << described << '\n';
    return done ? 0 : 1;
}
