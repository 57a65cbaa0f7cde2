#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// The column texts of a folder's items, read ahead for a file manager that asks about its
// items one at a time and waits for each answer: the items found here are answered at
// once. Each text is handed out once; the file-manager watch forgets what it sees change,
// and a read that such a change overtook is not kept. Safe to use from any thread.
class ColumnCache {
public:
    // A mark taken before a folder is read ahead, for keep().
    [[nodiscard]] std::uint64_t mark();

    // Adds the (name, column text) pairs read in the folder since `since`, unless
    // something in the folder was forgotten meanwhile; up to kBytesKept in all. False
    // once that is reached: reading further ahead would be in vain.
    bool keep(const std::string& folder, std::uint64_t since,
              std::vector<std::pair<std::string, std::string>>&& columns);

    // The item's text, taken out; nullopt when there is none.
    [[nodiscard]] std::optional<std::string> take(const std::string& path);

    // Whether the folder is being read ahead: from the request to its last part.
    void setReading(const std::string& folder, bool reading);
    [[nodiscard]] bool isReading(const std::string& folder);

    // Forgets the item at the path / everything of the folder / everything.
    void forget(const std::string& path);
    void forgetFolder(const std::string& folder);
    void forgetAll();

    // Bytes of names and texts kept at most, in all folders.
    static constexpr std::size_t kBytesKept = 8 << 20;

private:
    // Looks names up without making a string of them: the file manager asks often.
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    template <typename Value>
    using Map = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;

    struct Folder {
        std::uint64_t changed = 0;
        Map<std::string> columns;
        std::size_t bytes = 0;
        bool reading = false;
    };
    // The folder's entry, made when it has none; key: the path up to its last "/".
    Folder& folderOf(std::string_view path);
    void clear(Folder& folder);

    std::mutex m_mutex;
    Map<Folder> m_folders;
    std::uint64_t m_now = 0;
    std::uint64_t m_allChanged = 0;
    std::size_t m_bytes = 0;
};
