#include "shell/handler_install.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/atomic_file.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/lookup.h"

namespace {

constexpr std::string_view kEntryName = "veskor-edit-description.desktop";
constexpr std::string_view kScriptName = "Edit description";
constexpr std::string_view kProgramName = "veskor";

struct IntegrationFile {
    std::string_view folder;
    std::string_view name;
    bool executable;  // KDE and Nautilus run only executable files from user folders
    std::string (*content)(const std::string& program);
    bool gnomeFilesOnly = false;  // GNOME Files' module offers the same entry
};

std::string desktopEntry(const std::string& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Version=1.0\n"
           "Name=Edit description\n"
           "GenericName=Description editor\n"
           "Comment=Attach a free-text description to a file or folder\n"
           "Icon=accessories-text-editor\n"
           "Exec=" +
           execArgument(program) +
           " %f\n"
           "Terminal=false\n"
           // Hidden from the application menus, offered by file managers only.
           "NoDisplay=true\n"
           // Every file type is a kind of application/octet-stream.
           "MimeType=application/octet-stream;inode/directory;\n"
           "Categories=Utility;\n";
}

std::string serviceMenu(const std::string& program) {
    return "[Desktop Entry]\n"
           "Type=Service\n"
           "X-KDE-ServiceTypes=KonqPopupMenu/Plugin\n"
           "MimeType=all/all;\n"
           "Actions=editDescription;\n"
           "\n"
           "[Desktop Action editDescription]\n"
           "Name=Edit description\n"
           "Icon=accessories-text-editor\n"
           "Exec=" +
           execArgument(program) + " %f\n";
}

// A desktop entry's value has escapes for tab, line feed and carriage return only; no
// other control character can stand in it.
bool fitsDesktopEntry(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
    });
}

// The shell's single quotes keep every character but the quote itself.
std::string shellQuoted(std::string_view text) {
    std::string out = "'";
    for (char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// GNOME Files passes the selected names relative to their folder, as they are: each
// item opens in an editor of its own, by its full path, so that no name reads as an
// option and two names never join into one.
std::string nautilusScript(const std::string& program) {
    const std::string quoted = shellQuoted(program);
    return "#!/bin/sh\n"
           "# Opens each selected file or folder in Veskor; with none, the picker.\n"
           "[ $# -gt 0 ] || exec " +
           quoted +
           "\n"
           "for name; do\n"
           "    case $name in /*) ;; *) name=$PWD/$name ;; esac\n"
           "    " +
           quoted +
           " \"$name\" &\n"
           "done\n"
           "wait\n";
}

constexpr IntegrationFile kFiles[] = {
    {"/applications/", kEntryName, false, desktopEntry},
    {"/kio/servicemenus/", kEntryName, true, serviceMenu},
    {"/nautilus/scripts/", kScriptName, true, nautilusScript, true},
};

std::error_code writeIntegrationFile(const std::string& dataHome, const IntegrationFile& file,
                                     const std::string& program) {
    const std::string folder = dataHome + std::string(file.folder);
    const std::string path = folder + std::string(file.name);
    if (auto ec = createFolders(folder, 0700))
        return ec;
    if (auto ec = replaceFileAtomically(path, file.content(program)))
        return ec;
    if (file.executable && ::chmod(path.c_str(), 0755) != 0)
        return std::error_code(errno, std::generic_category());
    return {};
}

}  // namespace

std::string execArgument(std::string_view argument) {
    std::string quoted = "\"";
    for (char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    quoted += '"';
    // The value's own escapes apply before the quoting is read, and "%" starts a
    // field code: both must be doubled. A line break would end the line.
    std::string value;
    for (char c : quoted) {
        if (c == '\n' || c == '\r' || c == '\t') {
            value += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t";
            continue;
        }
        if (c == '\\' || c == '%')
            value += c;
        value += c;
    }
    return value;
}

bool nautilusModuleInstalled(const std::string& appPath) {
    const std::string_view module = VESKOR_BIN_TO_NAUTILUS_MODULE;
    return !module.empty() && fileExists(appPath + std::string(module));
}

std::error_code installDesktopIntegration(const std::string& dataHome, const std::string& program,
                                          ModulesInstalled modules) {
    // Without a home there is no per-user folder, and "" would mean the root folder.
    if (dataHome.empty())
        return std::make_error_code(std::errc::no_such_file_or_directory);
    if (!fitsDesktopEntry(program))
        return std::make_error_code(std::errc::invalid_argument);
    std::error_code first;
    for (const IntegrationFile& file : kFiles) {
        // One entry per menu: a script left from before the module came goes.
        if (file.gnomeFilesOnly && modules.nautilus) {
            static_cast<void>(
                removeFile(dataHome + std::string(file.folder) + std::string(file.name)));
            continue;
        }
        std::error_code ec = writeIntegrationFile(dataHome, file, program);
        if (!first)
            first = ec;
    }
    return first;
}

void removeDesktopIntegration(const std::string& dataHome) {
    if (dataHome.empty())
        return;
    for (const IntegrationFile& file : kFiles)
        static_cast<void>(removeFile(dataHome + std::string(file.folder) + std::string(file.name)));
}

void installHandler(Prompter& prompter, const std::string& appPath) {
    if (ask(prompter,
            "Doing this will add the ability to view and modify file comments using file "
            "manager.  Continue?",
            Buttons::YesNoCancel) != Answer::Yes)
        return;
    // As with any registration, the outcome is not reported: "Done." follows regardless.
    static_cast<void>(installDesktopIntegration(appDataFolder(),
                                                appPath + std::string(kProgramName),
                                                {.nautilus = nautilusModuleInstalled(appPath)}));
    prompter.message("Done.", kProgramTitle, Buttons::Ok, Icon::None);
}

// The files are removed whichever program they point at.
void uninstallHandler(Prompter& prompter, const std::string& /*appPath*/) {
    if (ask(prompter,
            "Doing this will remove the ability to view and modify file comments using file "
            "manager.  Continue?",
            Buttons::YesNoCancel) != Answer::Yes)
        return;
    removeDesktopIntegration(appDataFolder());
    prompter.message("Done.", kProgramTitle, Buttons::Ok, Icon::None);
}
