#include "cli/batch_reader.h"

#include "platform/code_page.h"
#include "platform/lookup.h"
#include "platform/xattr.h"
#include "stores/descript_ion.h"
#include "stores/exported_desc.h"
#include "stores/xdg_comment.h"

FailsafeScan::FailsafeScan(std::string failsafeDBfile, std::string top)
    : m_file(std::move(failsafeDBfile)), m_top(std::move(top)) {}

const FailsafeOffsets& FailsafeScan::offsets() {
    std::call_once(m_scanned, [this] { m_offsets = scanFailsafeDB(m_file, m_top); });
    return m_offsets;
}

BatchReader::BatchReader(FailsafeScan& failsafe, bool mayEnterFolders)
    : m_failsafe(failsafe), m_streams(mayEnterFolders) {}

void BatchReader::enterFolder(const std::string& folder,
                              const std::vector<std::string>& folderNames) {
    m_folder = folder;
    m_indexRead = false;
    m_descriptIon.reset();
    m_exportedFiles.clear();
    for (const std::string& name : folderNames) {
        if (name.ends_with(kExportedSuffix))
            m_exportedFiles.insert(name);
    }
    m_streams.enterFolder(folder);
}

void BatchReader::reenterFolder() {
    m_streams.enterFolder(m_folder);
}

void BatchReader::readIndex() {
    const std::string indexFile = m_folder + "00_index.txt";
    m_hasIndex = fileExists(indexFile);
    m_index = m_hasIndex ? read00IndexEntries(indexFile) : IndexEntries();
    m_indexRead = true;
}

std::string BatchReader::exportedDesc(const TargetPaths& target) {
    if (m_exportedFiles.empty() ||
        !m_exportedFiles.contains(target.targetFile + std::string(kExportedSuffix)))
        return "";
    return readExpDesc(target.targetFileFullPathname);
}

std::string BatchReader::oldStreamDesc(const TargetPaths& target) {
    return readOldNTFSDesc(target.targetFileFullPathname, m_streams);
}

std::string BatchReader::summaryDesc(const TargetPaths& target) {
    return readNTFSDesc(target.targetFileFullPathname, m_streams);
}

std::optional<std::string> BatchReader::indexDesc(const TargetPaths& target) {
    if (!m_indexRead)
        readIndex();
    if (!m_hasIndex)
        return std::nullopt;
    auto entry = m_index.find(upperCase(target.targetFile));
    return entry == m_index.end() ? std::string() : entry->second;
}

std::optional<std::string> BatchReader::failsafeDesc(const std::string& /*failsafeDBfile*/,
                                                     const TargetPaths& target) {
    // Entries described elsewhere never need the database: a tree described in its files
    // is listed without reading it at all.
    return readFailsafeDBAt(m_failsafe.file(), m_failsafe.offsets(), target.targetFileFullPathname);
}

std::optional<std::string> BatchReader::commentDesc(const TargetPaths& target) {
    std::string bytes;
    if (m_streams.read(target.targetFileFullPathname, kXdgCommentStream, bytes) != StreamStatus::Ok)
        return std::nullopt;
    return commentText(bytes);
}

std::optional<std::string> BatchReader::descriptIonDesc(const TargetPaths& target) {
    if (!m_descriptIon)
        m_descriptIon = readDescriptIonEntries(descriptIonFile(m_folder));
    if (!*m_descriptIon)
        return std::nullopt;
    auto entry = (*m_descriptIon)->find(descriptIonKey(target.targetFile));
    return entry == (*m_descriptIon)->end() ? std::nullopt : std::optional(entry->second);
}

void BatchReader::ListedStreams::enterFolder(const std::string& folder) {
    m_folder = m_mayEnterFolders && m_current.enter(folder) ? folder : "";
    m_path.clear();
}

const char* BatchReader::ListedStreams::shortPath(const std::string& path) const {
    if (m_folder.empty() || path.size() <= m_folder.size() || !path.starts_with(m_folder) ||
        path.find('/', m_folder.size()) != std::string::npos)
        return path.c_str();
    return path.c_str() + m_folder.size();
}

StreamStatus BatchReader::ListedStreams::list(const std::string& path) {
    if (path != m_path) {
        m_path = path;
        m_status = listStreams(shortPath(path), m_names);
    }
    return m_status;
}

StreamStatus BatchReader::ListedStreams::read(const std::string& path, std::string_view name,
                                              std::string& bytes) {
    bytes.clear();
    if (StreamStatus status = list(path); status != StreamStatus::Ok)
        return status;
    return exists(path, name) == StreamStatus::Ok ? readStream(shortPath(path), name, bytes)
                                                  : StreamStatus::Missing;
}

StreamStatus BatchReader::ListedStreams::exists(const std::string& path, std::string_view name) {
    if (StreamStatus status = list(path); status != StreamStatus::Ok)
        return status;
    for (std::size_t start = 0; start < m_names.size();) {
        std::size_t end = m_names.find('\0', start);
        if (std::string_view(m_names).substr(start, end - start) == name)
            return StreamStatus::Ok;
        start = end + 1;
    }
    return StreamStatus::Missing;
}

// Listings never write.
StreamStatus BatchReader::ListedStreams::replace(const std::string&, std::string_view,
                                                 std::string_view) {
    return StreamStatus::Failed;
}
