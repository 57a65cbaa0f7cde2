#include "picker/picker_file_system.h"

#include <QStorageInfo>
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

// Names in the order a reader expects: letters without regard to case, then byte order.
bool listedBefore(const std::string& a, const std::string& b) {
    auto lowerLess = [](unsigned char x, unsigned char y) {
        return std::tolower(x) < std::tolower(y);
    };
    if (std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), lowerLess))
        return true;
    return !std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(), lowerLess) &&
           a < b;
}

void sortNames(std::vector<std::string>& names) {
    std::ranges::sort(names, listedBefore);
}

}  // namespace

std::vector<std::string> PickerFileSystem::mountPoints() const {
    std::vector<std::string> mounts{"/"};
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        std::string root = volume.rootPath().toStdString();
        std::error_code ec;
        if (volume.isValid() && volume.isReady() && fs::is_directory(root, ec) &&
            std::ranges::find(mounts, root) == mounts.end())
            mounts.push_back(root);
    }
    std::ranges::sort(mounts);
    return mounts;
}

FolderListing PickerFileSystem::listFolder(const std::string& folder) const {
    FolderListing listing;
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        std::string name = it->path().filename().string();
        std::error_code statError;
        fs::file_status status = it->status(statError);
        if (name.starts_with('.') || statError)
            continue;
        if (fs::is_directory(status))
            listing.folders.push_back(name);
        else if (fs::is_regular_file(status))
            listing.files.push_back(name);
    }
    if (ec)
        return {};
    sortNames(listing.folders);
    sortNames(listing.files);
    listing.readable = true;
    return listing;
}

bool PickerFileSystem::canReadFile(const std::string& path) const {
    std::ifstream file(path, std::ios::binary);
    return file.is_open();
}
