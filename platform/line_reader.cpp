#include "platform/line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

// Reads start small and double up to kChunk: most files read are an index or a
// setting of a few lines, and a buffer grown for them costs more than the read.
constexpr std::size_t kFirstChunk = 1 << 12;
constexpr std::size_t kChunk = 1 << 16;

// The position of the first CR or LF at or after `from`; npos when there is none.
// Two memchr calls rather than find_first_of("\r\n"), which tests every byte against
// the set one at a time: reading a large database is mostly this search.
std::size_t findLineEnd(std::string_view text, std::size_t from) {
    if (from >= text.size())
        return std::string_view::npos;
    const char* start = text.data() + from;
    const std::size_t length = text.size() - from;
    const auto* lf = static_cast<const char*>(std::memchr(start, '\n', length));
    const std::size_t limit = lf ? static_cast<std::size_t>(lf - start) : length;
    const auto* cr = static_cast<const char*>(std::memchr(start, '\r', limit));
    if (cr)
        return from + static_cast<std::size_t>(cr - start);
    return lf ? from + limit : std::string_view::npos;
}

}  // namespace

LineReader::LineReader(const std::string& path) : m_chunk(kFirstChunk) {
    m_error = m_file.open(path);
}

LineReader::LineReader(const std::string& path, std::uint64_t offset) : LineReader(path) {
    if (!m_file.isOpen())
        return;
    if (::lseek(m_file.fd(), static_cast<off_t>(offset), SEEK_SET) < 0)
        m_error = {errno, std::generic_category()};
    m_bufferOffset = offset;
}

LineReader::LineReader(RegularFile file) : m_file(std::move(file)), m_chunk(kFirstChunk) {
    if (!m_file.isOpen())
        m_error = std::make_error_code(std::errc::bad_file_descriptor);
}

LineReader::~LineReader() = default;

// Appends the next chunk of the file to the buffer; false when nothing more came.
bool LineReader::fill() {
    if (m_eof || m_error)
        return false;
    if (m_pos > 0) {
        m_buffer.erase(0, m_pos);
        m_bufferOffset += m_pos;
        m_pos = 0;
    }
    std::size_t old = m_buffer.size();
    m_buffer.resize(old + m_chunk);
    ssize_t n;
    do {
        n = ::read(m_file.fd(), m_buffer.data() + old, m_chunk);
    } while (n < 0 && errno == EINTR);
    m_chunk = std::min(m_chunk * 2, kChunk);
    if (n < 0) {
        m_error = {errno, std::generic_category()};
        n = 0;
    }
    m_buffer.resize(old + static_cast<std::size_t>(n));
    if (n == 0)
        m_eof = true;
    return n > 0;
}

// The position of the end of the line at m_pos, reading more as needed but not much
// past kMaxLineBytes; npos when the file or the allowance ended first.
std::size_t LineReader::findEnd() {
    std::size_t scanned = 0;  // bytes after m_pos known to hold no line end
    for (;;) {
        std::size_t end = findLineEnd(m_buffer, m_pos + scanned);
        if (end != std::string::npos) {
            // A CR at the end of the buffer may be the first half of CR LF. The fill
            // moves what is left of the buffer to its start.
            if (m_buffer[end] == '\r' && end + 1 == m_buffer.size() && !m_eof) {
                std::size_t offset = end - m_pos;
                fill();
                return m_pos + offset;
            }
            return end;
        }
        scanned = m_buffer.size() - m_pos;
        if (scanned > kMaxLineBytes || !fill())
            return std::string::npos;
    }
}

std::size_t LineReader::lineEndLength(std::size_t end) const {
    return m_buffer[end] == '\r' && end + 1 < m_buffer.size() && m_buffer[end + 1] == '\n' ? 2 : 1;
}

// Hands on (or, without a sink, drops) the rest of a cut line chunk by chunk, up to and
// with its end. A fill moves what is left of the buffer to its start.
void LineReader::passRest(const std::function<void(std::string_view)>& sink) {
    if (!m_restPending)
        return;
    m_restPending = false;
    for (;;) {
        const std::size_t end = findLineEnd(m_buffer, m_pos);
        const std::size_t stop = end == std::string::npos ? m_buffer.size() : end;
        if (sink && stop > m_pos)
            sink(std::string_view(m_buffer).substr(m_pos, stop - m_pos));
        m_pos = stop;
        if (end != std::string::npos) {
            if (m_buffer[end] == '\r' && end + 1 == m_buffer.size() && !m_eof)
                fill();
            m_pos += lineEndLength(m_pos);
            return;
        }
        if (!fill())
            return;
    }
}

void LineReader::copyRestOfLine(const std::function<void(std::string_view)>& sink) {
    passRest(sink);
}

bool LineReader::next(std::string& line) {
    line.clear();
    passRest(nullptr);
    m_cut = false;
    if (m_error)
        return false;
    const std::size_t end = findEnd();
    if (m_error || (end == std::string::npos && m_pos >= m_buffer.size()))
        return false;
    const std::size_t length = (end == std::string::npos ? m_buffer.size() : end) - m_pos;
    m_cut = length > kMaxLineBytes;
    line.assign(m_buffer, m_pos, std::min(length, kMaxLineBytes));
    m_lineOffset = m_bufferOffset + m_pos;
    if (m_cut) {
        m_pos += kMaxLineBytes;
        m_restPending = true;
    } else {
        m_pos = end == std::string::npos ? m_buffer.size() : end + lineEndLength(end);
    }
    return true;
}

bool LineReader::atEnd() {
    passRest(nullptr);
    if (m_pos < m_buffer.size())
        return false;
    return !fill();
}

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = findLineEnd(text, pos);
        if (end == std::string_view::npos) {
            lines.push_back(text.substr(pos));
            break;
        }
        lines.push_back(text.substr(pos, end - pos));
        pos = end + ((text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') ? 2 : 1);
    }
    return lines;
}
