#include "shell/registration_scripts.h"

#include <initializer_list>

namespace registrationScripts {

namespace {

constexpr std::string_view kClsid32 = "{3B9E41C2-7A05-4D6F-9C18-E2A4F7B0D531}";
constexpr std::string_view kClsid64 = "{8F2C6D10-B4E7-4A93-A5D2-1C7E09F3B6A8}";
constexpr std::string_view kLibrary32 = "MetadataPropertyHandler (x86).dll";
constexpr std::string_view kLibrary64 = "MetadataPropertyHandler (x64).dll";

constexpr std::string_view kFullDetails =
    "prop:System.PropGroup.Description;System.Title;System.Subject;System.Keywords;"
    "System.Category;System.Comment;System.Rating;System.PropGroup.Origin;System.Author;"
    "System.Document.RevisionNumber";
constexpr std::string_view kPreviewDetails =
    "prop:System.Title;System.Subject;System.Keywords;System.Category;System.Comment;"
    "System.Rating;System.Author;System.Document.RevisionNumber";

constexpr std::string_view kPropertyHandlersKey =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\PropertySystem\\"
    "PropertyHandlers\\";
constexpr std::string_view kFileExtsKey =
    "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\";

// Collects lines, each ended by CR LF.
class Lines {
public:
    Lines& add(std::initializer_list<std::string_view> pieces) {
        for (std::string_view piece : pieces)
            m_text += piece;
        m_text += "\r\n";
        return *this;
    }
    Lines& empty() { return add({}); }
    std::string take() { return std::move(m_text); }

private:
    std::string m_text;
};

std::string_view clsid(int host64Bit) {
    return host64Bit == 1 ? kClsid64 : kClsid32;
}
std::string_view library(int host64Bit) {
    return host64Bit == 1 ? kLibrary64 : kLibrary32;
}

// Backslashes are the escape character of registry-script strings.
std::string doubledBackslashes(std::string_view path) {
    std::string out;
    for (char c : path) {
        out += c;
        if (c == '\\')
            out += '\\';
    }
    return out;
}

void addClassKey(Lines& lines, std::string_view root, int host64Bit) {
    lines.add({"[", root, "CLSID\\", clsid(host64Bit), "]"})
        .add({"@=\"Metadata Property Handler\""})
        .add({"\"DisableProcessIsolation\"=dword:00000001"})
        .add({"\"ManualSafeSave\"=dword:00000001"})
        .add({"\"EnableShareDenyWrite\"=dword:00000001"})
        .add({"\"EnableShareDenyNone\"=dword:00000001"})
        .empty();
}

void addServerKey(Lines& lines, std::string_view root, std::string_view appPath, int host64Bit) {
    lines.add({"[", root, "CLSID\\", clsid(host64Bit), "\\InprocServer32]"})
        .add({"@=\"", doubledBackslashes(appPath), library(host64Bit), "\""})
        .add({"\"ThreadingModel\"=\"Both\""})
        .empty();
}

void addDetailsKey(Lines& lines, std::string_view key, std::string_view extension) {
    lines.add({"[", key, extension, "]"})
        .add({"\"FullDetails\"=\"", kFullDetails, "\""})
        .add({"\"PreviewDetails\"=\"", kPreviewDetails, "\""})
        .empty();
}

}  // namespace

std::string targetExtension(std::string_view targetFile) {
    std::size_t dot = targetFile.rfind('.');
    return std::string(dot == std::string_view::npos ? targetFile : targetFile.substr(dot));
}

std::string registryScript(std::string_view targetFile, std::string_view appPath, int host64Bit) {
    const std::string extension = targetExtension(targetFile);
    Lines lines;
    lines.add({"Windows Registry Editor Version 5.00"}).empty();
    addClassKey(lines, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\", host64Bit);
    addServerKey(lines, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\", appPath, host64Bit);
    addClassKey(lines, "HKEY_CLASSES_ROOT\\", host64Bit);
    addServerKey(lines, "HKEY_CLASSES_ROOT\\", appPath, host64Bit);
    lines.add({"[", kPropertyHandlersKey, extension, "]"})
        .add({"@=\"", clsid(host64Bit), "\""})
        .empty();
    addDetailsKey(lines, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\SystemFileAssociations\\",
                  extension);
    addDetailsKey(lines, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\", extension);
    addDetailsKey(lines, "HKEY_CLASSES_ROOT\\SystemFileAssociations\\", extension);
    addDetailsKey(lines, "HKEY_CLASSES_ROOT\\", extension);
    addDetailsKey(lines, "HKEY_CURRENT_USER\\Software\\Classes\\", extension);
    lines.add({"[", kFileExtsKey, extension, "]"}).empty();
    lines.add({"[", kFileExtsKey, extension, "\\OpenWithList]"}).empty();
    lines.add({"[", kFileExtsKey, extension, "\\OpenWithProgids]"}).empty();
    return lines.take();
}

std::string registrationBatch(std::string_view targetFile, std::string_view appDataPath,
                              int host64Bit) {
    // Selects the 64-bit registry view, which a 32-bit REG.EXE would not see otherwise.
    const std::string_view view = host64Bit == 1 ? " /reg:64" : "";
    Lines lines;
    lines.add({"@echo off"}).add({"cls"});
    lines.add(
        {"\"REG.EXE\" QUERY \"", kPropertyHandlersKey, targetExtension(targetFile), "\"", view});
    lines.add(
        {"if errorlevel 1 \"REG.EXE\" IMPORT \"", appDataPath, kRegistryScriptName, "\"", view});
    lines.add({"del \"", appDataPath, kRegistryScriptName, "\""});
    lines.add({"del \"", appDataPath, kRegistrationBatchName, "\""});
    lines.add({"exit"});
    return lines.take();
}

std::string runScript(RunTarget kind, std::string_view target, std::string_view windir,
                      std::string_view appDataPath) {
    Lines lines;
    lines.add({"@echo off"});
    // The blank inside the first pair of quotes is what the batch file has always held.
    if (kind == RunTarget::Folder)
        lines.add({"\"", windir, "\\explorer.exe \" \"", target, "\""});
    else
        lines.add({"\"", target, "\""});
    lines.add({"del \"", appDataPath, kRunScriptName, "\""});
    return lines.take();
}

}  // namespace registrationScripts
