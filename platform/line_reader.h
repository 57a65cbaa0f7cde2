#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/regular_file.h"

// No line that the program writes comes near this many bytes: a description of 30000
// characters, four bytes each at most, and a name.
inline constexpr std::size_t kMaxLineBytes = std::size_t{1} << 20;

// Reads a text file line by line without holding it whole. A line ends at CR LF, at
// LF or at a lone CR; a final line end does not start another (empty) line. Lines
// come back as raw bytes, without their end. A line longer than kMaxLineBytes comes
// back cut to that length; the rest of it is skipped, or handed on piece by piece by
// copyRestOfLine(), and never held whole, so the memory a reader holds stays bounded
// whatever the file holds.
//
// The file is opened as a RegularFile: through a link, a FIFO or a device, the reader
// reads nothing and reports the open error.
class LineReader {
public:
    explicit LineReader(const std::string& path);
    // Starts reading at a byte offset, as from a line found earlier by lineOffset().
    LineReader(const std::string& path, std::uint64_t offset);
    // Reads a file the caller opened, from where its descriptor stands.
    explicit LineReader(RegularFile file);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // The open or read error, if any; a reader with an error yields no more lines.
    std::error_code error() const { return m_error; }

    // The next line; false at the end of the file or after an error.
    bool next(std::string& line);

    // True when no line follows the one last returned.
    bool atEnd();

    // The byte offset in the file at which the line last returned begins.
    std::uint64_t lineOffset() const { return m_lineOffset; }

    // True when the line last returned was cut at kMaxLineBytes.
    bool wasCut() const { return m_cut; }

    // Right after next() returned a cut line: passes the rest of that line, up to its
    // end, to `sink` in pieces, so that a caller may copy the line whole. Otherwise, or
    // once anything else was asked of the reader, it does nothing.
    void copyRestOfLine(const std::function<void(std::string_view)>& sink);

    // The file read, for AtomicFile::open() of its replacement.
    const RegularFile& file() const { return m_file; }

private:
    bool fill();
    std::size_t findEnd();
    std::size_t lineEndLength(std::size_t end) const;
    void passRest(const std::function<void(std::string_view)>& sink);

    RegularFile m_file;
    std::error_code m_error;
    std::string m_buffer;
    std::size_t m_chunk;  // bytes the next read asks for
    std::size_t m_pos = 0;
    std::uint64_t m_bufferOffset = 0;  // the file offset of m_buffer[0]
    std::uint64_t m_lineOffset = 0;
    bool m_eof = false;
    bool m_cut = false;
    bool m_restPending = false;  // the rest of a cut line is still to be passed
};

// The lines of text held in memory, split by the same rules as LineReader.
std::vector<std::string_view> splitLines(std::string_view text);
