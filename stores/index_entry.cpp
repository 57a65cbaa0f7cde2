#include "stores/index_entry.h"

#include <sys/stat.h>

#include "platform/code_page.h"
#include "platform/lookup.h"

namespace {

constexpr std::size_t kShortNameColumns = 12;
constexpr std::string_view kCrLf = "\r\n";

std::string_view trimBlanks(std::string_view text) {
    std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool usesShortForm(std::string_view name) {
    return characterCount(name) < indexEntry::kTextColumn &&
           name.find(' ') == std::string_view::npos;
}

}  // namespace

namespace indexEntry {

bool isContinuation(std::string_view line) {
    return line.starts_with(kIndent);
}

bool isQuoted(std::string_view text) {
    return !text.empty() && text.front() == '"' && text.back() == '"';
}

std::string_view shortFormName(std::string_view head) {
    return trimBlanks(firstCharacters(head, kShortNameColumns));
}

std::string_view itemName(std::string_view head) {
    if (!isQuoted(head))
        return shortFormName(head);
    return head.size() < 2 ? std::string_view() : head.substr(1, head.size() - 2);
}

bool isUtf8(std::string_view bytes) {
    return decodeFileText(bytes) == bytes;
}

bool itemExists(const std::string& folder, std::string_view item) {
    if (fileOrFolderExists(folder + std::string(item)))
        return true;
    return !isUtf8(item) && fileOrFolderExists(folder + decodeFileText(item));
}

IndexName::IndexName(std::string_view name) : m_upper(upperCase(name)), m_isUtf8(isUtf8(name)) {}

bool IndexName::matchesQuoted(std::string_view head) const {
    return isQuoted(head) && head.size() >= 2 && matchesName(head.substr(1, head.size() - 2));
}

bool IndexName::matchesShort(std::string_view head) const {
    return matchesName(shortFormName(head));
}

bool IndexName::matchesName(std::string_view name) const {
    if (upperCase(name) == m_upper)
        return true;
    return m_isUtf8 && !isUtf8(name) && upperCase(decodeFileText(name)) == m_upper;
}

std::string entryText(std::string_view name, std::string_view description) {
    std::string text;
    if (usesShortForm(name)) {
        text = name;
        text.append(kTextColumn - characterCount(name), ' ');
    } else {
        text = '"' + std::string(name) + '"' + std::string(kCrLf) + std::string(kIndent);
    }
    for (std::size_t pos = 0;;) {
        std::size_t end = description.find(kCrLf, pos);
        text += description.substr(pos, end - pos);
        if (end == std::string_view::npos)
            return text;
        text += std::string(kCrLf) + std::string(kIndent);
        pos = end + kCrLf.size();
    }
}

bool hiddenFromOthers(const std::string& folder, const std::string& item) {
    struct stat itemStatus {
    }, folderStatus{};
    return ::stat((folder + item).c_str(), &itemStatus) == 0 &&
           (itemStatus.st_mode & S_IROTH) == 0 && ::stat(folder.c_str(), &folderStatus) == 0 &&
           (folderStatus.st_mode & S_IXOTH) != 0;
}

}  // namespace indexEntry
