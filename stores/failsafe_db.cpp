#include "stores/failsafe_db.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/folder_lock.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"

namespace {

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kMarkerPrefix = "Veskor failsafe DB 1.7 ";
constexpr std::string_view kUpdateFailed = "Error: Problem while updating filesafe DB.";

// The begin and end lines of one target's records.
struct RecordMarkers {
    explicit RecordMarkers(const std::string& targetFileFullPathname)
        : key(upperCase(targetFileFullPathname)),
          begin(std::string(kMarkerPrefix) + "BEGIN " + key),
          end(std::string(kMarkerPrefix) + "END " + key) {}
    std::string key, begin, end;
};

bool isAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Lines are compared as bytes; a line written by a Windows program in its own code
// page is decoded first, so its record is still found. Decoding leaves ASCII as it
// is, so only lines with other bytes need it: the scan of a large database stays a
// comparison per line.
bool isMarker(std::string_view line, std::string_view marker) {
    if (line == marker)
        return true;
    return line.starts_with(kMarkerPrefix) && !isAscii(line) && decodeFileText(line) == marker;
}

// Skips the lines of a record up to and including its end line, or to the file's end.
void skipRecord(LineReader& reader, const RecordMarkers& markers) {
    std::string line;
    while (reader.next(line) && !isMarker(line, markers.end)) {
    }
}

// Appends the description lines of a record; a last line that is not the end line
// is left out.
void appendRecord(LineReader& reader, const RecordMarkers& markers, std::string& text) {
    std::string line;
    while (reader.next(line) && !isMarker(line, markers.end) && !reader.atEnd()) {
        text += decodeFileText(line);
        text += kCrLf;
    }
}

// Copies the old database line by line, without the target's records.
std::error_code copyOtherRecords(const std::string& failsafeDBfile, const RecordMarkers& markers,
                                 AtomicFile& out) {
    LineReader reader(failsafeDBfile);
    std::string line;
    while (reader.next(line)) {
        if (isMarker(line, markers.begin) && !reader.atEnd())
            skipRecord(reader, markers);
        else
            out.writeLine(line);
    }
    return reader.error();
}

std::string folderOf(const std::string& path) {
    std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash + 1);
}

std::error_code rewriteDatabase(const SharedState& state, std::chrono::milliseconds lockTimeout) {
    const std::string& file = state.data.failsafeDBfile;
    // Held from before the database is read until after the rename, so that two
    // copies of the program never lose each other's record.
    FolderLock lock;
    if (auto ec = lock.acquire(folderOf(file), lockTimeout))
        return ec;
    AtomicFile out(file);
    if (auto ec = out.open())
        return ec;
    RecordMarkers markers(state.target.targetFileFullPathname);
    if (state.removeTargetFileDescFlag != 1) {
        out.writeLine(markers.begin);
        out.writeLine(state.targetFileDesc);
        out.writeLine(markers.end);
    }
    if (fileExists(file)) {
        if (auto ec = copyOtherRecords(file, markers, out))
            return ec;
    }
    return out.commit();
}

}  // namespace

std::optional<std::string> readFailsafeDB(const std::string& failsafeDBfile,
                                          const std::string& targetFileFullPathname) {
    if (!fileExists(failsafeDBfile))
        return std::nullopt;
    RecordMarkers markers(targetFileFullPathname);
    LineReader reader(failsafeDBfile);
    std::optional<std::string> text;
    std::string line;
    while (reader.next(line)) {
        if (!isMarker(line, markers.begin) || reader.atEnd())
            continue;
        if (!text)
            text.emplace();
        appendRecord(reader, markers, *text);
    }
    if (reader.error())
        return std::nullopt;
    return text;
}

WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter) {
    return updateFailsafeDB(state, prompter, kFailsafeLockTimeout);
}

WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter,
                             std::chrono::milliseconds lockTimeout) {
    if (rewriteDatabase(state, lockTimeout)) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
