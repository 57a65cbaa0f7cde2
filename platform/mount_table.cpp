#include "platform/mount_table.h"

#include <libmount/libmount.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "platform/files.h"

namespace {

struct TableDeleter {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
};

std::string textOf(const char* field) {
    return field ? field : "";
}

}  // namespace

std::string readMountTable() {
    std::string table;
    (void)readWholeFile("/proc/self/mountinfo", table);
    return table;
}

std::optional<Mount> mountHolding(std::string_view mountTable, std::string_view path) {
    if (mountTable.empty())
        return std::nullopt;
    std::string text(mountTable);
    std::unique_ptr<libmnt_table, TableDeleter> table(mnt_new_table());
    FILE* stream = ::fmemopen(text.data(), text.size(), "r");
    if (!table || !stream) {
        if (stream)
            (void)std::fclose(stream);
        return std::nullopt;
    }
    // Lines that do not parse are skipped; the rest of the table still counts.
    (void)mnt_table_parse_stream(table.get(), stream, "mountinfo");
    (void)std::fclose(stream);
    // The path and then each folder above it, by name alone: the path need not exist on
    // this machine.
    for (std::string folder(path); !folder.empty();) {
        if (libmnt_fs* fs = mnt_table_find_target(table.get(), folder.c_str(), MNT_ITER_BACKWARD))
            return Mount{textOf(mnt_fs_get_target(fs)), textOf(mnt_fs_get_fstype(fs)),
                         textOf(mnt_fs_get_source(fs))};
        const std::size_t slash = folder.find_last_of('/');
        folder = folder == "/" || slash == std::string::npos
                     ? ""
                     : folder.substr(0, std::max<std::size_t>(slash, 1));
    }
    return std::nullopt;
}
