#include "platform/shipped_files.h"

#include <filesystem>

#include "platform/lookup.h"

std::string shippedFile(const std::string& appPath, std::string_view installedFolder,
                        std::string_view name) {
    std::string beside = appPath + std::string(name);
    if (fileExists(beside))
        return beside;
    // Written without "..", so that a message or a log names the real folder.
    const std::string installed =
        std::filesystem::path(appPath + std::string(installedFolder) + "/" + std::string(name))
            .lexically_normal()
            .string();
    return fileExists(installed) ? installed : beside;
}

std::string helpFilePath(const std::string& appPath) {
    return shippedFile(appPath, VESKOR_BIN_TO_DATA, "help.html");
}

std::string networkModulePath(const std::string& appPath) {
    return shippedFile(appPath, VESKOR_BIN_TO_MODULES, VESKOR_NETWORK_MODULE);
}
