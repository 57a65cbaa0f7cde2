#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "contracts/prompter.h"

// The file-manager integration: "Edit description" offered for every file and folder,
// opening the program on it. It consists of three files below the per-user data folder
// ($XDG_DATA_HOME, else ~/.local/share):
//   applications/veskor-edit-description.desktop  a desktop entry for every file type
//                                                  and folders ("Open With")
//   kio/servicemenus/veskor-edit-description.desktop  the context menu of KDE's Dolphin
//   nautilus/scripts/Edit description                the Scripts menu of GNOME Files
// Installing writes all three (replacing older ones), uninstalling removes them. Where
// GNOME Files' own module is installed, it offers "Edit description" already: the
// script is then left out, and removed if an earlier install wrote it.

// The options dialog's buttons: ask first (Yes, No, Cancel); on Yes install or remove
// the integration for the program in `appPath` (its folder, ending in "/"), then say
// "Done." whatever came of it. No or Cancel does nothing.
void installHandler(Prompter& prompter, const std::string& appPath);
void uninstallHandler(Prompter& prompter, const std::string& appPath);

// The file managers whose module is installed, and so need no file of their own.
struct ModulesInstalled {
    bool nautilus = false;
};

// Whether GNOME Files' module is installed where the package puts it, as seen from the
// program folder `appPath` (ending in "/"). Always false in a build without the module.
[[nodiscard]] bool nautilusModuleInstalled(const std::string& appPath);

// The same without questions, below `dataHome`; the first write failure is returned.
// A program path that an entry cannot hold (a control character other than tab, line
// feed and carriage return) writes nothing and returns invalid_argument.
[[nodiscard]] std::error_code installDesktopIntegration(const std::string& dataHome,
                                                        const std::string& program,
                                                        ModulesInstalled modules = {});
// Removes whichever of the files exist; failures are ignored.
void removeDesktopIntegration(const std::string& dataHome);

// An Exec line argument: quoted, with the escapes of the quoting and of the value (a
// line break as "\n", so that the entry keeps one Exec line).
[[nodiscard]] std::string execArgument(std::string_view argument);
