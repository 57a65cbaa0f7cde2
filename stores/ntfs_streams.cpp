#include "stores/ntfs_streams.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <optional>

#include "platform/code_page.h"
#include "platform/lookup.h"
#include "stores/mod_time.h"
#include "stores/summary_info_codec.h"

namespace {

constexpr std::string_view kSummaryStream =
    "\x05"
    "SummaryInformation";
constexpr std::string_view kMarkerStream = "{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}";
constexpr std::string_view kOldStream = "description";
constexpr std::string_view kSambaPrefix = "DosStream.";
constexpr std::string_view kSambaSuffix = ":$DATA";
constexpr std::string_view kSambaAttributes = "DOSATTRIB";

class HostStreams : public StreamAccess {
public:
    StreamStatus read(const std::string& path, std::string_view name, std::string& bytes) override {
        return readStream(path, name, bytes);
    }
    StreamStatus exists(const std::string& path, std::string_view name) override {
        return streamExists(path, name);
    }
    StreamStatus replace(const std::string& path, std::string_view name,
                         std::string_view bytes) override {
        return replaceStream(path, name, bytes);
    }
    StreamStatus remove(const std::string& path, std::string_view name) override {
        return removeStream(path, name);
    }
    StreamStatus streamNames(const std::string& path, std::string& names) override {
        return listStreams(path, names);
    }
};

// Samba's name of one of our streams, made once: listings ask for it for every entry.
const std::string& sambaName(std::string_view name) {
    auto named = [](std::string_view stream) {
        return std::string(kSambaPrefix) + std::string(stream) + std::string(kSambaSuffix);
    };
    static const std::string summary = named(kSummaryStream), marker = named(kMarkerStream),
                             old = named(kOldStream);
    assert(name == kSummaryStream || name == kMarkerStream || name == kOldStream);
    return name == kSummaryStream ? summary : name == kMarkerStream ? marker : old;
}

// Samba keeps one zero byte after a stream's bytes.
std::string sambaValue(std::string_view bytes) {
    return std::string(bytes) + '\0';
}

// A stream in our naming, else in Samba's.
StreamStatus readEitherNaming(const std::string& target, std::string_view name, std::string& bytes,
                              StreamAccess& streams) {
    StreamStatus status = streams.read(target, name, bytes);
    if (status != StreamStatus::Missing ||
        streams.read(target, sambaName(name), bytes) != StreamStatus::Ok)
        return status;
    if (!bytes.empty() && bytes.back() == '\0')
        bytes.pop_back();
    return StreamStatus::Ok;
}

bool carriesSambaMarks(const std::string& target, StreamAccess& streams) {
    std::string names;
    if (streams.streamNames(target, names) != StreamStatus::Ok)
        return false;
    const std::vector<std::string_view> listed = splitNames(names);
    return std::any_of(listed.begin(), listed.end(), [](std::string_view name) {
        return name == kSambaAttributes || name.starts_with(kSambaPrefix);
    });
}

// A Windows client of the share reads these; a summary that cannot be written there
// (ext4 gives a file's attributes one block, now shared with ours) is removed so that
// Windows shows no comment rather than an old one.
void writeSambaStreams(const std::string& target, std::string_view summary, StreamAccess& streams) {
    if (streams.replace(target, sambaName(kSummaryStream), sambaValue(summary)) != StreamStatus::Ok)
        (void)streams.remove(target, sambaName(kSummaryStream));
    (void)streams.replace(target, sambaName(kMarkerStream), sambaValue(""));
}

// Only regular files get their time back: folders and system entries are left alone.
std::optional<std::int64_t> keptLastWriteTime(const std::string& target) {
    std::int64_t lastWrite = 0;
    if (!fileExists(target) || !modTime::getFileTimes(target, lastWrite))
        return std::nullopt;
    return lastWrite;
}

// A stream that cannot be read counts as no stream: the description gets a fresh one.
std::string summaryStreamFor(const std::string& target, std::string_view text,
                             StreamAccess& streams) {
    std::string old;
    if (readEitherNaming(target, kSummaryStream, old, streams) != StreamStatus::Ok || old.empty())
        return createSummaryInfo(text);
    return updateSummaryInfo(old, text);
}

// The old stream is truncated, never removed, and never created.
void emptyOldStream(const std::string& target, StreamAccess& streams) {
    if (streams.exists(target, kOldStream) == StreamStatus::Ok)
        (void)streams.replace(target, kOldStream, "");
    if (streams.exists(target, sambaName(kOldStream)) == StreamStatus::Ok)
        (void)streams.replace(target, sambaName(kOldStream), sambaValue(""));
}

// A summary that could not be replaced must not go on showing the old description, here
// or to a Windows client of the share: it is removed, with Samba's copy.
void removeStaleSummary(const std::string& target, StreamAccess& streams) {
    (void)streams.remove(target, kSummaryStream);
    (void)streams.remove(target, sambaName(kSummaryStream));
}

std::string streamText(const std::string& target, std::string_view name, StreamAccess& streams) {
    std::string bytes;
    if (readEitherNaming(target, name, bytes, streams) != StreamStatus::Ok)
        return {};
    return bytes;
}

}  // namespace

StreamAccess& hostStreams() {
    static HostStreams streams;
    return streams;
}

std::string readNTFSDesc(const std::string& targetFileFullPathname) {
    return readNTFSDesc(targetFileFullPathname, hostStreams());
}

std::string readNTFSDesc(const std::string& targetFileFullPathname, StreamAccess& streams) {
    return readSummaryInfoDesc(streamText(targetFileFullPathname, kSummaryStream, streams));
}

std::string readOldNTFSDesc(const std::string& targetFileFullPathname) {
    return readOldNTFSDesc(targetFileFullPathname, hostStreams());
}

// Windows programs wrote this stream in their ANSI page; it reads right either way.
std::string readOldNTFSDesc(const std::string& targetFileFullPathname, StreamAccess& streams) {
    return decodeFileText(streamText(targetFileFullPathname, kOldStream, streams));
}

WriteResult updateNTFSDesc(const SharedState& state, EditorState& editor) {
    return updateNTFSDesc(state, editor, hostStreams());
}

WriteResult updateNTFSDesc(const SharedState& state, EditorState& editor, StreamAccess& streams) {
    const std::string& target = state.target.targetFileFullPathname;
    std::optional<std::int64_t> lastWrite = keptLastWriteTime(target);
    const bool samba = carriesSambaMarks(target, streams);
    std::string summary = summaryStreamFor(target, editor.text(), streams);
    StreamStatus status = streams.replace(target, kSummaryStream, summary);
    if (status == StreamStatus::Ok)
        status = streams.replace(target, kMarkerStream, "");
    else
        removeStaleSummary(target, streams);
    // Someone else's file: nothing was written, and there is nothing to report.
    if (status == StreamStatus::PermissionDenied)
        return WriteResult::Ok;
    if (status != StreamStatus::Ok) {
        if (isOn(state.options.optionsCreateExpDescNonNTFS))
            editor.setExportChecked(true);
        return WriteResult::Error;
    }
    if (samba)
        writeSambaStreams(target, summary, streams);
    emptyOldStream(target, streams);
    if (lastWrite && fileExists(target))
        (void)modTime::setFileTimes(target, *lastWrite);
    return WriteResult::Ok;
}
