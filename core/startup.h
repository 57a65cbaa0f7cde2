#pragma once

#include <string>

#include "contracts/prompter.h"
#include "contracts/shared_state.h"

// The start-up sequence up to the point where the target is resolved: the data
// folders and their portable-mode fallback, the option defaults and the settings.
// The steps stand in order in runStartup(); the window adds its own steps through
// StartupWindow, which veskor-cli leaves empty.

struct StartupEnvironment {
    std::string appPath;        // the program folder; a parameter so tests never write
                                // into the build tree
    std::string appDataFolder;  // the host's per-user data folder; may be empty
};

// The steps of start-up that belong to the main window.
class StartupWindow {
public:
    virtual ~StartupWindow() = default;
    // Caption, version label, toolbar state, Update and Options buttons disabled.
    virtual void beginStartup() {}
    // The description box emptied along with the target paths.
    virtual void clearDescription() {}
    // The settings are read: enable Options, fill the lists, take the theme colour,
    // tick the export box when the settings ask for it.
    virtual void settingsReady(const SharedState& /*state*/) {}
};

enum class StartupResult { Continue, EndProgram };

// Start-up up to the settings. EndProgram after a fatal message has been shown.
[[nodiscard]] StartupResult runStartup(SharedState& state, const StartupEnvironment& environment,
                                       Prompter& prompter, StartupWindow& window);
