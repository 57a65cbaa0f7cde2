#pragma once

#include <string>
#include <string_view>

// The lines of the folder index "00_index.txt" (see stores/folder_index.h for the
// layout): how a head line names its item, how a target's name matches head lines, and
// how an entry is written. Shared by the single save and the batched one.
namespace indexEntry {

inline constexpr std::size_t kTextColumn = 13;  // description text starts after 13 characters
inline constexpr std::string_view kIndent = "             ";
static_assert(kIndent.size() == kTextColumn);

[[nodiscard]] bool isContinuation(std::string_view line);
[[nodiscard]] bool isQuoted(std::string_view text);
[[nodiscard]] bool isUtf8(std::string_view bytes);

// The name in a head line's first 12 characters, blanks trimmed.
[[nodiscard]] std::string_view shortFormName(std::string_view head);

// The item a head line stands for; "" for a quote alone or an empty line.
[[nodiscard]] std::string_view itemName(std::string_view head);

// The target's name as head lines are matched against it: on the names' bytes, so a
// name in any encoding (a Latin-1 name from an old archive) finds its own entry;
// letter case is ignored where the bytes are UTF-8. A head that is not UTF-8 was
// written by a Windows program in its code page, and also matches a UTF-8 name that
// reads the same.
class IndexName {
public:
    explicit IndexName(std::string_view name);

    [[nodiscard]] bool matchesQuoted(std::string_view head) const;
    [[nodiscard]] bool matchesShort(std::string_view head) const;
    [[nodiscard]] bool matches(std::string_view head) const {
        return matchesQuoted(head) || matchesShort(head);
    }
    // The upper-cased name, and whether the name is UTF-8.
    [[nodiscard]] const std::string& upper() const { return m_upper; }
    [[nodiscard]] bool isUtf8Name() const { return m_isUtf8; }

private:
    [[nodiscard]] bool matchesName(std::string_view name) const;

    std::string m_upper;
    bool m_isUtf8;
};

// Whether the item a head line names is still in the folder (ending in "/"): under the
// name's bytes, or, for a head in a Windows code page, under the UTF-8 name it reads as.
[[nodiscard]] bool itemExists(const std::string& folder, std::string_view item);

// The target's entry (CR LF breaks in `description`), without its final line end.
// Whether the item is one that other users may not read, in a folder they may enter: its
// description then stays out of the folder's index, which they can read.
[[nodiscard]] bool hiddenFromOthers(const std::string& folder, const std::string& item);

[[nodiscard]] std::string entryText(std::string_view name, std::string_view description);

}  // namespace indexEntry
