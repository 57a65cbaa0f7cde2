#include "stores/ntfs_streams.h"

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
};

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
    if (streams.read(target, kSummaryStream, old) != StreamStatus::Ok || old.empty())
        return createSummaryInfo(text);
    return updateSummaryInfo(old, text);
}

// The old stream is truncated, never removed, and never created.
void emptyOldStream(const std::string& target, StreamAccess& streams) {
    if (streams.exists(target, kOldStream) == StreamStatus::Ok)
        (void)streams.replace(target, kOldStream, "");
}

std::string streamText(const std::string& target, std::string_view name, StreamAccess& streams) {
    std::string bytes;
    if (streams.read(target, name, bytes) != StreamStatus::Ok)
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
    std::string summary = summaryStreamFor(target, editor.text(), streams);
    StreamStatus status = streams.replace(target, kSummaryStream, summary);
    if (status == StreamStatus::Ok)
        status = streams.replace(target, kMarkerStream, "");
    // Someone else's file: nothing was written, and there is nothing to report.
    if (status == StreamStatus::PermissionDenied)
        return WriteResult::Ok;
    if (status != StreamStatus::Ok) {
        if (isOn(state.options.optionsCreateExpDescNonNTFS))
            editor.setExportChecked(true);
        return WriteResult::Error;
    }
    emptyOldStream(target, streams);
    if (lastWrite && fileExists(target))
        (void)modTime::setFileTimes(target, *lastWrite);
    return WriteResult::Ok;
}
