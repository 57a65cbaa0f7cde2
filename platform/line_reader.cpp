#include "platform/line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

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
    m_fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_fd < 0)
        m_error = {errno, std::generic_category()};
}

LineReader::LineReader(const std::string& path, std::uint64_t offset) : LineReader(path) {
    if (m_fd < 0)
        return;
    if (::lseek(m_fd, static_cast<off_t>(offset), SEEK_SET) < 0)
        m_error = {errno, std::generic_category()};
    m_bufferOffset = offset;
}

LineReader::~LineReader() {
    if (m_fd >= 0)
        ::close(m_fd);
}

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
        n = ::read(m_fd, m_buffer.data() + old, m_chunk);
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

bool LineReader::next(std::string& line) {
    line.clear();
    if (m_error)
        return false;
    std::size_t scanFrom = m_pos;
    for (;;) {
        std::size_t end = findLineEnd(m_buffer, scanFrom);
        if (end != std::string::npos) {
            // A CR at the end of the buffer may be the first half of CR LF.
            if (m_buffer[end] == '\r' && end + 1 == m_buffer.size() && !m_eof) {
                std::size_t offset = end - m_pos;
                fill();
                if (m_error)
                    return false;
                scanFrom = m_pos + offset;
                continue;
            }
            line.assign(m_buffer, m_pos, end - m_pos);
            m_lineOffset = m_bufferOffset + m_pos;
            bool crlf =
                m_buffer[end] == '\r' && end + 1 < m_buffer.size() && m_buffer[end + 1] == '\n';
            m_pos = end + (crlf ? 2 : 1);
            return true;
        }
        std::size_t scanned = m_buffer.size() - m_pos;
        if (!fill()) {
            if (m_error || m_pos >= m_buffer.size())
                return false;
            line.assign(m_buffer, m_pos, std::string::npos);
            m_lineOffset = m_bufferOffset + m_pos;
            m_pos = m_buffer.size();
            return true;
        }
        scanFrom = m_pos + scanned;
    }
}

bool LineReader::atEnd() {
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
