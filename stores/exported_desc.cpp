#include "stores/exported_desc.h"

#include <sys/stat.h>

#include <string_view>
#include <system_error>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"

namespace {

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kUpdateFailed =
    "Error: Problem while updating exported description file.";

// A new file tells no one more than the target itself does: it grants no permission
// that the target withholds.
std::error_code writeExpDesc(const std::string& target, const std::string& path,
                             const std::string& description) {
    FolderLock lock;
    if (auto ec = lock.acquire(folderOfFile(path), kFolderLockTimeout))
        return ec;
    AtomicFile out(path);
    struct stat status {};
    if (::stat(target.c_str(), &status) == 0)
        out.limitNewMode(status.st_mode & 0666);
    if (auto ec = out.open())
        return ec;
    out.write(description);
    out.write(kCrLf);
    return out.commit();
}

// A read-only file cannot be deleted any more than it can be rewritten.
std::error_code deleteExpDesc(const std::string& path) {
    if (!fileExists(path))
        return {};
    if (isReadOnlyFile(path))
        return std::make_error_code(std::errc::permission_denied);
    return removeFile(path);
}

}  // namespace

std::string exportedDescPath(const std::string& targetFileFullPathname) {
    return targetFileFullPathname + ".description";
}

std::string readExpDesc(const std::string& targetFileFullPathname) {
    std::string path = exportedDescPath(targetFileFullPathname);
    if (!fileExists(path))
        return "";
    LineReader reader(path);
    std::string text, line;
    // A file that begins with an empty line counts as holding no description.
    if (!reader.next(line) || line.empty())
        return "";
    do {
        text += decodeFileText(line);
        text += kCrLf;
    } while (reader.next(line));
    return reader.error() ? "" : text;
}

WriteResult updateExpDesc(const SharedState& state, bool exportChecked, Prompter& prompter) {
    std::string path = exportedDescPath(state.target.targetFileFullPathname);
    std::error_code ec;
    if (exportChecked && state.removeTargetFileDescFlag == 0)
        ec = writeExpDesc(state.target.targetFileFullPathname, path, state.targetFileDesc);
    if (!ec && state.removeTargetFileDescFlag == 1)
        ec = deleteExpDesc(path);
    if (ec) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
