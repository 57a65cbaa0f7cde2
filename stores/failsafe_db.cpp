#include "stores/failsafe_db.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/folder_lock.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "platform/regular_file.h"

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

// Writes a line of the old database as it was, an over-long one whole.
void copyLine(LineReader& reader, const std::string& line, AtomicFile& out) {
    out.write(line);
    reader.copyRestOfLine([&out](std::string_view rest) { out.write(rest); });
    out.write(kCrLf);
}

// Copies the old database line by line, without the target's records.
std::error_code copyOtherRecords(LineReader& reader, const RecordMarkers& markers,
                                 AtomicFile& out) {
    std::string line;
    while (reader.next(line)) {
        if (isMarker(line, markers.begin) && !reader.atEnd())
            skipRecord(reader, markers);
        else
            copyLine(reader, line, out);
    }
    return reader.error();
}

std::error_code rewriteDatabase(const SharedState& state, std::chrono::milliseconds lockTimeout) {
    RecordMarkers markers(state.target.targetFileFullPathname);
    return rewriteFailsafeFile(state.data.failsafeDBfile, lockTimeout,
                               [&](LineReader* old, AtomicFile& out) -> std::error_code {
                                   if (state.removeTargetFileDescFlag != 1) {
                                       out.writeLine(markers.begin);
                                       out.writeLine(state.targetFileDesc);
                                       out.writeLine(markers.end);
                                   }
                                   return old ? copyOtherRecords(*old, markers, out)
                                              : std::error_code();
                               });
}

}  // namespace

// Decoding leaves ASCII as it is, so only lines with other bytes need it: the scan of a
// large database stays a comparison per line.
bool isMarker(std::string_view line, std::string_view marker) {
    if (line == marker)
        return true;
    return line.starts_with(kMarkerPrefix) && !isAscii(line) && decodeFileText(line) == marker;
}

std::error_code rewriteFailsafeFile(
    const std::string& file, std::chrono::milliseconds lockTimeout,
    const std::function<std::error_code(LineReader* old, AtomicFile& out)>& write) {
    // Two copies of the program never lose each other's record.
    FolderLock lock;
    if (auto ec = lock.acquire(folderOfFile(file), lockTimeout))
        return ec;
    RegularFile opened;
    if (auto ec = opened.open(file); ec && ec != std::errc::no_such_file_or_directory)
        return ec;
    const bool hadDatabase = opened.isOpen();
    LineReader reader(std::move(opened));
    AtomicFile out(file);
    // Every path and description the user keeps: no one else's to read.
    out.makePrivate();
    if (auto ec = out.open(reader.file()))
        return ec;
    if (auto ec = write(hadDatabase ? &reader : nullptr, out))
        return ec;
    return out.commit();
}

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
    return updateFailsafeDB(state, prompter, kFolderLockTimeout);
}

WriteResult updateFailsafeDB(const SharedState& state, Prompter& prompter,
                             std::chrono::milliseconds lockTimeout) {
    if (rewriteDatabase(state, lockTimeout)) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}

namespace {

constexpr std::string_view kBeginPrefix = "Veskor failsafe DB 1.7 BEGIN ";
constexpr std::string_view kEndPrefix = "Veskor failsafe DB 1.7 END ";

// The key of a begin or end line, as the reader would compare it; nullopt for any
// other line. A line in another code page is decoded into `decoded`, which the key
// may then point into.
std::optional<std::string_view> markerKey(std::string_view line, std::string_view prefix,
                                          std::string& decoded) {
    // The prefix is ASCII, which decoding leaves as it is and no other byte becomes.
    if (!line.starts_with(prefix))
        return std::nullopt;
    std::string_view key = line.substr(prefix.size());
    // A scan of the whole database tests every key: no early exit, so it vectorises.
    unsigned char bits = 0;
    for (char c : key)
        bits |= static_cast<unsigned char>(c);
    if (bits < 0x80)
        return key;
    decoded = decodeFileText(key);
    return std::string_view(decoded);
}

// A key of `folderKey` itself or of something under it.
bool isAtOrUnder(std::string_view key, std::string_view folderKey) {
    return key.starts_with(folderKey) &&
           (key.size() == folderKey.size() || key[folderKey.size()] == '/');
}

// The rest of a record: the lines after its begin line, up to and including the end
// line of `key`, or to the file's end. One record is held, never the database.
void readRecordLines(LineReader& reader, const std::string& key, std::vector<std::string>& lines) {
    const std::string end = std::string(kEndPrefix) + key;
    lines.clear();
    std::string line;
    while (reader.next(line)) {
        lines.push_back(line);
        if (isMarker(line, end))
            return;
    }
}

void writeLines(AtomicFile& out, const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        out.writeLine(line);
}

struct RecordMove {
    std::string fromKey, toKey;
    bool keepOld, leaveDestination;
};

bool isMoving(std::string_view key, const RecordMove& move) {
    return isAtOrUnder(key, move.fromKey) || isAtOrUnder(key, move.toKey);
}

// The key of a begin line that the move concerns: its bytes where they match, so that
// a name that is not UTF-8 keeps its bytes, else the key as the reader decodes it.
std::optional<std::string> movingKey(std::string_view line, const RecordMove& move) {
    if (!line.starts_with(kBeginPrefix))
        return std::nullopt;
    if (std::string_view bytes = line.substr(kBeginPrefix.size()); isMoving(bytes, move))
        return std::string(bytes);
    std::string decoded;
    auto key = markerKey(line, kBeginPrefix, decoded);
    return key && isMoving(*key, move) ? std::optional<std::string>(*key) : std::nullopt;
}

void writeRecord(AtomicFile& out, const std::string& key, const std::vector<std::string>& lines) {
    out.writeLine(std::string(kBeginPrefix) + key);
    writeLines(out, lines);
}

// Streams the database into `out`, moving or copying the records of `move`.
std::error_code copyMovingRecords(LineReader& reader, const RecordMove& move, AtomicFile& out) {
    std::string line;
    std::vector<std::string> record;
    while (reader.next(line)) {
        const std::optional<std::string> key = movingKey(line, move);
        if (!key || reader.atEnd()) {
            copyLine(reader, line, out);
            continue;
        }
        readRecordLines(reader, *key, record);
        auto keepAsItWas = [&] {
            out.writeLine(line);
            writeLines(out, record);
        };
        // A record already where the entry now is: stale, unless another entry's.
        if (isAtOrUnder(*key, move.toKey)) {
            if (move.leaveDestination)
                keepAsItWas();
            continue;
        }
        if (move.keepOld)
            keepAsItWas();
        if (move.leaveDestination)
            continue;
        const std::string newKey = move.toKey + key->substr(move.fromKey.size());
        if (!record.empty() && isMarker(record.back(), std::string(kEndPrefix) + *key))
            record.back() = std::string(kEndPrefix) + newKey;
        writeRecord(out, newKey, record);
    }
    return reader.error();
}

std::error_code rewriteMovingRecords(const std::string& file, const RecordMove& move) {
    if (!fileExists(file))
        return {};
    return rewriteFailsafeFile(
        file, kFolderLockTimeout, [&](LineReader* old, AtomicFile& out) -> std::error_code {
            return old ? copyMovingRecords(*old, move, out) : std::error_code();
        });
}

}  // namespace

FailsafeOffsets scanFailsafeDB(const std::string& failsafeDBfile, const std::string& folder) {
    FailsafeOffsets offsets;
    if (!fileExists(failsafeDBfile))
        return offsets;
    const std::string folderKey = upperCase(folder);
    // Keys whose record is still open: a begin line of the same key inside it is text.
    std::unordered_set<std::size_t> open;
    LineReader reader(failsafeDBfile);
    std::string line, decoded;
    while (reader.next(line)) {
        if (auto key = markerKey(line, kBeginPrefix, decoded)) {
            if (!key->starts_with(folderKey))
                continue;
            std::size_t hash = std::hash<std::string_view>{}(*key);
            if (!open.contains(hash) && !reader.atEnd()) {
                offsets.byKeyHash.emplace(hash, reader.lineOffset());
                open.insert(hash);
            }
        } else if (open.empty()) {
            continue;
        } else if (auto endKey = markerKey(line, kEndPrefix, decoded)) {
            open.erase(std::hash<std::string_view>{}(*endKey));
        }
    }
    if (reader.error())
        offsets.byKeyHash.clear();
    return offsets;
}

std::optional<std::string> readFailsafeDBAt(const std::string& failsafeDBfile,
                                            const FailsafeOffsets& offsets,
                                            const std::string& targetFileFullPathname) {
    RecordMarkers markers(targetFileFullPathname);
    auto [first, last] = offsets.byKeyHash.equal_range(std::hash<std::string_view>{}(markers.key));
    std::vector<std::uint64_t> starts;
    for (auto it = first; it != last; ++it)
        starts.push_back(it->second);
    std::sort(starts.begin(), starts.end());
    std::optional<std::string> text;
    for (std::uint64_t start : starts) {
        LineReader reader(failsafeDBfile, start);
        std::string line;
        // Another key of the same hash, or a database that changed since the scan.
        if (!reader.next(line) || !isMarker(line, markers.begin) || reader.atEnd())
            continue;
        if (!text)
            text.emplace();
        appendRecord(reader, markers, *text);
        if (reader.error())
            return std::nullopt;
    }
    return text;
}

WriteResult moveFailsafeRecords(const std::string& failsafeDBfile, const FailsafeMove& move,
                                Prompter& prompter) {
    RecordMove records{upperCase(move.from), upperCase(move.to), move.keepOld,
                       move.leaveDestination};
    if (records.fromKey == records.toKey || (records.keepOld && records.leaveDestination))
        return WriteResult::Ok;
    if (rewriteMovingRecords(failsafeDBfile, records)) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}
