#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Reads a text file line by line without holding it whole. A line ends at CR LF, at
// LF or at a lone CR; a final line end does not start another (empty) line. Lines
// come back as raw bytes, without their end.
class LineReader {
public:
    explicit LineReader(const std::string& path);
    // Starts reading at a byte offset, as from a line found earlier by lineOffset().
    LineReader(const std::string& path, std::uint64_t offset);
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

private:
    bool fill();

    int m_fd = -1;
    std::error_code m_error;
    std::string m_buffer;
    std::size_t m_chunk;  // bytes the next read asks for
    std::size_t m_pos = 0;
    std::uint64_t m_bufferOffset = 0;  // the file offset of m_buffer[0]
    std::uint64_t m_lineOffset = 0;
    bool m_eof = false;
};

// The lines of text held in memory, split by the same rules as LineReader.
std::vector<std::string_view> splitLines(std::string_view text);
