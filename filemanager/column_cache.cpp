#include "filemanager/column_cache.h"

#include "core/paths.h"

std::uint64_t ColumnCache::mark() {
    std::lock_guard lock(m_mutex);
    return ++m_now;
}

bool ColumnCache::keep(const std::string& folderPath, std::uint64_t since,
                       std::vector<std::pair<std::string, std::string>>&& columns) {
    std::lock_guard lock(m_mutex);
    Folder& folder = folderOf(withTrailingSeparator(folderPath));
    if (folder.changed > since || m_allChanged > since)
        return true;
    for (auto& [name, text] : columns) {
        const std::size_t bytes = name.size() + text.size();
        if (m_bytes + bytes > kBytesKept)
            return false;
        auto [it, added] = folder.columns.try_emplace(std::move(name), std::move(text));
        if (!added)
            continue;
        folder.bytes += bytes;
        m_bytes += bytes;
    }
    return true;
}

std::optional<std::string> ColumnCache::take(const std::string& path) {
    std::lock_guard lock(m_mutex);
    auto folder = m_folders.find(::folderOf(path));
    if (folder == m_folders.end())
        return std::nullopt;
    auto found = folder->second.columns.find(lastComponent(path));
    if (found == folder->second.columns.end())
        return std::nullopt;
    std::string text = std::move(found->second);
    const std::size_t bytes = found->first.size() + text.size();
    folder->second.bytes -= bytes;
    m_bytes -= bytes;
    folder->second.columns.erase(found);
    return text;
}

void ColumnCache::setReading(const std::string& folder, bool reading) {
    std::lock_guard lock(m_mutex);
    folderOf(withTrailingSeparator(folder)).reading = reading;
}

bool ColumnCache::isReading(const std::string& folder) {
    std::lock_guard lock(m_mutex);
    return folderOf(withTrailingSeparator(folder)).reading;
}

void ColumnCache::forget(const std::string& path) {
    std::lock_guard lock(m_mutex);
    Folder& folder = folderOf(path);
    folder.changed = ++m_now;
    auto found = folder.columns.find(lastComponent(path));
    if (found == folder.columns.end())
        return;
    const std::size_t bytes = found->first.size() + found->second.size();
    folder.bytes -= bytes;
    m_bytes -= bytes;
    folder.columns.erase(found);
}

void ColumnCache::forgetFolder(const std::string& folderPath) {
    std::lock_guard lock(m_mutex);
    Folder& folder = folderOf(withTrailingSeparator(folderPath));
    folder.changed = ++m_now;
    clear(folder);
}

void ColumnCache::forgetAll() {
    std::lock_guard lock(m_mutex);
    m_allChanged = ++m_now;
    m_folders.clear();
    m_bytes = 0;
}

ColumnCache::Folder& ColumnCache::folderOf(std::string_view path) {
    return m_folders[std::string(::folderOf(path))];
}

void ColumnCache::clear(Folder& folder) {
    m_bytes -= folder.bytes;
    folder.bytes = 0;
    folder.columns.clear();
}
