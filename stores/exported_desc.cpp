#include "stores/exported_desc.h"

#include <string_view>
#include <system_error>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/files.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"

namespace {

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kUpdateFailed =
    "Error: Problem while updating exported description file.";

std::error_code writeExpDesc(const std::string& path, const std::string& description) {
    return replaceFileAtomically(path, std::string(description) + std::string(kCrLf));
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
        ec = writeExpDesc(path, state.targetFileDesc);
    if (!ec && state.removeTargetFileDescFlag == 1)
        ec = deleteExpDesc(path);
    if (ec) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
