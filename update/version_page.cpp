#include "update/version_page.h"

#include "platform/code_page.h"

namespace {

std::string padded(int number) {
    std::string digits = std::to_string(number);
    if (digits.size() < 3)
        digits.insert(0, 3 - digits.size(), '0');
    return digits;
}

std::string_view cutBefore(std::string_view text, char c) {
    return text.substr(0, text.find(c));
}

}  // namespace

std::string localVersionText(int major, int minor, int revision) {
    return padded(major) + "." + padded(minor) + "." + padded(revision);
}

std::string announcedVersion(std::string_view pageBytes) {
    const std::string page = decodeFileText(pageBytes);
    return std::string(cutBefore(cutBefore(cutBefore(page, '\r'), '\n'), ' '));
}

bool announcesNewerVersion(std::string_view pageBytes, std::string_view localVersion) {
    // UTF-8 compares byte by byte (as unsigned bytes) in the order of its character
    // codes, so the decoded texts compare as their characters do.
    return std::string_view(announcedVersion(pageBytes)) > localVersion;
}
