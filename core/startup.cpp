#include "core/startup.h"

#include "config/config_file.h"
#include "core/paths.h"
#include "platform/files.h"
#include "platform/lookup.h"

namespace {

const std::string kFailsafeFolder = "failsafe db";

// The per-user data folder without its trailing "/". With no host data folder at all
// it starts at the root, where nothing creates it, so the lookups fall through to the
// program folder.
std::string perUserFolder(const std::string& appData) {
    return appData + "/Kelvane/Veskor";
}

// Folder creation never reports: the lookups that follow decide what is usable.
// Every path and description the user keeps lies below, so only the owner may enter,
// also where an older version made the folders open to all.
void createDataFolders(const std::string& appData) {
    if (appData.empty())
        return;
    // A fresh account may have no data folder yet; without it every start would fall
    // into portable mode.
    (void)createFolders(appData, 0700);
    for (const std::string& folder : {appData + "/Kelvane", perUserFolder(appData),
                                      perUserFolder(appData) + "/" + kFailsafeFolder}) {
        (void)createFolder(folder, 0700);
        (void)restrictFolderToOwner(folder);
    }
}

// The failsafe folder: the per-user one, else the one in the program folder, created
// there when needed. Empty when neither can be had. A plain file of that name passes
// the lookups too, as the folder lookups have always let it.
std::string findFailsafeFolder(const std::string& appData, const std::string& appPath) {
    std::string perUser = perUserFolder(appData) + "/" + kFailsafeFolder;
    if (fileOrFolderExists(perUser))
        return perUser + "/";
    std::string portable = appPath + kFailsafeFolder;
    if (fileOrFolderExists(portable))
        return portable + "/";
    (void)createFolder(portable, 0700);
    return fileOrFolderExists(portable) ? portable + "/" : std::string();
}

std::string findAppDataPath(const std::string& appData, const std::string& appPath) {
    std::string perUser = perUserFolder(appData);
    return fileOrFolderExists(perUser) ? perUser + "/" : appPath;
}

void clearTarget(SharedState& state) {
    state.target = TargetPaths{};
    state.targetFileDesc.clear();
}

}  // namespace

StartupResult runStartup(SharedState& state, const StartupEnvironment& environment,
                         Prompter& prompter, StartupWindow& window) {
    window.beginStartup();
    state.data.appPath = withTrailingSeparator(environment.appPath);
    const std::string& appData = environment.appDataFolder;
    createDataFolders(appData);

    state.data.failsafeDBpath = findFailsafeFolder(appData, state.data.appPath);
    if (state.data.failsafeDBpath.empty()) {
        // Two blanks after each inner full stop: the text is the program's own.
        showError(prompter,
                  "Error: Application data folder missing and cannot be created.  Attempted to "
                  "run in 'portable mode'; cannot do.  Make sure write permissions are enabled "
                  "in application folder.");
        return StartupResult::EndProgram;
    }
    state.data.appDataPath = findAppDataPath(appData, state.data.appPath);
    state.data.configFile = state.data.appDataPath + "config.dat";

    clearTarget(state);
    window.clearDescription();
    state.options = Options{};

    if (!fileExists(state.data.configFile))
        createConfigFile(state.data.configFile, state.options, prompter);
    if (processConfigFile(state.data.configFile, state.options, prompter) ==
        ConfigResult::EndProgram)
        return StartupResult::EndProgram;

    window.settingsReady(state);
    return StartupResult::Continue;
}
