#include "stores/folder_index.h"

#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/files.h"
#include "platform/folder_lock.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "platform/regular_file.h"
#include "stores/index_entry.h"

namespace {

using namespace indexEntry;

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kOlderIndexName = "Index_00.txt";
constexpr std::string_view kUpdateFailed =
    "Error: Problem while updating '00_index.txt' file.\r\n"
    "(You can disable '00_index.txt' creation in Options.)";

void appendTextLine(std::string_view bytes, std::string& text) {
    text += decodeFileText(bytes);
    text += kCrLf;
}

// Appends the text of the continuation lines that follow. False when the file ended;
// otherwise `line` holds the first line after them.
bool appendContinuations(LineReader& reader, std::string& line, std::string& text) {
    while (reader.next(line)) {
        if (!isContinuation(line))
            return true;
        appendTextLine(std::string_view(line).substr(kTextColumn), text);
    }
    return false;
}

// Whether a head line and its continuation lines leave the index: the target's own
// old entries, and entries of items gone from the folder unless the head is the
// file's last line.
bool dropsEntry(std::string_view head, const IndexName& name, const std::string& folder,
                LineReader& reader) {
    if (name.matches(head))
        return true;
    std::string_view item = itemName(head);
    return !item.empty() && !reader.atEnd() && !itemExists(folder, item);
}

// Writes a line of the old index as it was, an over-long one whole.
void copyLine(LineReader& reader, const std::string& line, AtomicFile& out) {
    out.write(line);
    reader.copyRestOfLine([&out](std::string_view rest) { out.write(rest); });
    out.write(kCrLf);
}

// Copies the old index's lines that stay, as they were; true when any was copied. A line
// too long for an entry of ours is another program's and stays.
bool copyKeptLines(const TargetPaths& target, LineReader& reader, AtomicFile& out,
                   std::error_code& ec) {
    IndexName name(target.targetFile);
    bool dropping = false, copied = false;
    std::string line;
    while (reader.next(line)) {
        if (!isContinuation(line))
            dropping = !reader.wasCut() && dropsEntry(line, name, target.indexFilePath, reader);
        if (dropping || line.empty())
            continue;
        copyLine(reader, line, out);
        copied = true;
    }
    ec = reader.error();
    return copied;
}

// The old index, when there is one; any other failure to open it fails the save.
std::error_code openOldIndex(const std::string& indexFile, RegularFile& old) {
    std::error_code ec = old.open(indexFile);
    return ec == std::errc::no_such_file_or_directory ? std::error_code() : ec;
}

std::error_code rewriteIndex(const SharedState& state) {
    const TargetPaths& target = state.target;
    RegularFile old;
    std::error_code ec = openOldIndex(target.indexFile, old);
    const bool hadIndex = old.isOpen();
    LineReader reader(std::move(old));
    AtomicFile out(target.indexFile);
    if (!ec)
        ec = out.open(reader.file());
    bool written = false;
    if (!ec && state.removeTargetFileDescFlag != 1 &&
        !hiddenFromOthers(target.indexFilePath, target.targetFile)) {
        out.writeLine(entryText(target.targetFile, state.targetFileDesc));
        written = true;
    }
    if (!ec && hadIndex)
        written = copyKeptLines(target, reader, out, ec) || written;
    if (!ec)
        ec = out.commit();
    if (ec) {
        out.discard();
        return ec;
    }
    // An index without entries is not kept.
    return written ? std::error_code() : removeFile(target.indexFile);
}

}  // namespace

std::string read00IndexFile(const TargetPaths& target) {
    if (!fileExists(target.indexFile))
        return "";
    LineReader reader(target.indexFile);
    IndexName name(target.targetFile);
    std::string text, line;
    while (reader.next(line)) {
        if (name.matchesQuoted(line) && !appendContinuations(reader, line, text))
            break;
        // The line that ends a quoted entry may start a short one; the line that
        // ends a short entry is not looked at again.
        if (name.matchesShort(line)) {
            appendTextLine(charactersFrom(line, kTextColumn), text);
            if (!appendContinuations(reader, line, text))
                break;
        }
    }
    return reader.error() ? "" : text;
}

WriteResult update00IndexFile(const SharedState& state, Prompter& prompter) {
    return update00IndexFile(state, prompter, kFolderLockTimeout);
}

WriteResult update00IndexFile(const SharedState& state, Prompter& prompter,
                              std::chrono::milliseconds lockTimeout) {
    // Held from before the old index is read until after the new one is in place (or
    // deleted), so that saves of other items of the folder never drop this entry.
    FolderLock lock;
    std::error_code ec = lock.acquire(state.target.indexFilePath, lockTimeout);
    if (!ec) {
        // The older name is adopted only when it cannot overwrite an index.
        std::string olderIndex = state.target.indexFilePath + std::string(kOlderIndexName);
        if (fileExists(olderIndex))
            (void)renameNoReplace(olderIndex, state.target.indexFile);
        ec = rewriteIndex(state);
    }
    if (ec) {
        showError(prompter, kUpdateFailed);
        return WriteResult::Error;
    }
    return WriteResult::Ok;
}

namespace {

// Reading one name, a head line is looked at in full, or for the short form only (the
// line that ended the name's quoted entry), or not at all (the line that ended its
// short entry). Only names whose entries the previous head line started are in such
// a state.
struct HeadExceptions {
    std::vector<std::string> shortOnly, skipped;
};

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The upper-cased names whose entry a head's name starts, as IndexName matches them:
// its bytes, and for a name in a Windows code page the UTF-8 name it reads as too.
std::vector<std::string> namesMatched(std::string_view name) {
    std::vector<std::string> names{upperCase(name)};
    if (!isUtf8(name))
        names.push_back(upperCase(decodeFileText(name)));
    return names;
}

// Starts the entries that a head line opens; the texts to which its continuation
// lines belong go to `open`.
HeadExceptions startEntries(std::string_view head, const HeadExceptions& exceptions,
                            IndexEntries& entries, std::vector<std::string*>& open) {
    HeadExceptions next;
    open.clear();
    if (isQuoted(head) && head.size() > 2) {
        for (std::string& name : namesMatched(head.substr(1, head.size() - 2))) {
            if (contains(exceptions.shortOnly, name) || contains(exceptions.skipped, name))
                continue;
            open.push_back(&entries[name]);
            next.shortOnly.push_back(std::move(name));
        }
    }
    std::string_view shortName = shortFormName(head);
    for (std::string& name :
         shortName.empty() ? std::vector<std::string>() : namesMatched(shortName)) {
        if (contains(exceptions.skipped, name))
            continue;
        std::string& text = entries[name];
        appendTextLine(charactersFrom(head, kTextColumn), text);
        open.push_back(&text);
        next.skipped.push_back(std::move(name));
    }
    return next;
}

}  // namespace

IndexEntries read00IndexEntries(const std::string& indexFile) {
    IndexEntries entries;
    if (!fileExists(indexFile))
        return entries;
    LineReader reader(indexFile);
    HeadExceptions exceptions;
    std::vector<std::string*> open;
    std::string line;
    while (reader.next(line)) {
        if (isContinuation(line)) {
            for (std::string* text : open)
                appendTextLine(std::string_view(line).substr(kTextColumn), *text);
        } else {
            exceptions = startEntries(line, exceptions, entries, open);
        }
    }
    if (reader.error())
        entries.clear();
    return entries;
}
