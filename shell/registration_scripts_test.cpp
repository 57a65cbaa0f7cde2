#include "shell/registration_scripts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace registrationScripts;

namespace {

std::string crlfLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

// Line `number` (1-based) of CR LF text, without its end; "" past the end.
std::string lineOf(const std::string& text, int number) {
    std::size_t start = 0;
    for (int i = 1; i < number; ++i) {
        start = text.find("\r\n", start);
        if (start == std::string::npos)
            return "";
        start += 2;
    }
    return text.substr(start, text.find("\r\n", start) - start);
}

const std::string kFull =
    "\"FullDetails\"=\"prop:System.PropGroup.Description;System.Title;System.Subject;"
    "System.Keywords;System.Category;System.Comment;System.Rating;System.PropGroup.Origin;"
    "System.Author;System.Document.RevisionNumber\"";
const std::string kPreview =
    "\"PreviewDetails\"=\"prop:System.Title;System.Subject;System.Keywords;System.Category;"
    "System.Comment;System.Rating;System.Author;System.Document.RevisionNumber\"";

}  // namespace

TEST(RegistrationScriptsTest, RegistryScriptForAFileWithoutExtensionOn64BitWindows) {
    const std::string clsid = "{8F2C6D10-B4E7-4A93-A5D2-1C7E09F3B6A8}";
    const std::string server =
        "@=\"C:\\\\Program Files\\\\Tools\\\\MetadataPropertyHandler (x64).dll\"";
    const std::vector<std::string> classValues = {
        "@=\"Metadata Property Handler\"",        "\"DisableProcessIsolation\"=dword:00000001",
        "\"ManualSafeSave\"=dword:00000001",      "\"EnableShareDenyWrite\"=dword:00000001",
        "\"EnableShareDenyNone\"=dword:00000001",
    };
    std::vector<std::string> expected = {"Windows Registry Editor Version 5.00", ""};
    auto add = [&](std::vector<std::string> lines) {
        expected.insert(expected.end(), lines.begin(), lines.end());
    };
    for (std::string root : {"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\", "HKEY_CLASSES_ROOT\\"}) {
        add({"[" + root + "CLSID\\" + clsid + "]"});
        add(classValues);
        add({"", "[" + root + "CLSID\\" + clsid + "\\InprocServer32]", server,
             "\"ThreadingModel\"=\"Both\"", ""});
    }
    add(
        {"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\PropertySystem\\"
         "PropertyHandlers\\Makefile]",
         "@=\"" + clsid + "\"", ""});
    for (std::string key :
         {"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\SystemFileAssociations\\",
          "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\", "HKEY_CLASSES_ROOT\\SystemFileAssociations\\",
          "HKEY_CLASSES_ROOT\\", "HKEY_CURRENT_USER\\Software\\Classes\\"})
        add({"[" + key + "Makefile]", kFull, kPreview, ""});
    const std::string fileExts =
        "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\"
        "Makefile";
    add({fileExts + "]", "", fileExts + "\\OpenWithList]", "", fileExts + "\\OpenWithProgids]",
         ""});
    ASSERT_EQ(expected.size(), 53u);

    EXPECT_EQ(registryScript("Makefile", "C:\\Program Files\\Tools\\", 1), crlfLines(expected));
}

TEST(RegistrationScriptsTest, RegistryScriptLinesDependOnHostAndExtension) {
    struct Case {
        const char* name;
        const char* targetFile;
        int host64Bit;
        int line;
        std::string expected;
    } const kCases[] = {
        {"32-bit class key", "Plan.txt", 0, 3,
         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{3B9E41C2-7A05-4D6F-9C18-E2A4F7B0D531}]"},
        {"32-bit library", "Plan.txt", 0, 22,
         "@=\"C:\\\\Tools\\\\MetadataPropertyHandler (x86).dll\""},
        {"any value but 1 is 32-bit", "Plan.txt", 2, 26,
         "@=\"{3B9E41C2-7A05-4D6F-9C18-E2A4F7B0D531}\""},
        {"64-bit handler", "Plan.txt", 1, 26, "@=\"{8F2C6D10-B4E7-4A93-A5D2-1C7E09F3B6A8}\""},
        {"extension of the last dot", "archive.tar.gz", 1, 40, "[HKEY_CLASSES_ROOT\\.gz]"},
        {"dot file", ".bashrc", 1, 44, "[HKEY_CURRENT_USER\\Software\\Classes\\.bashrc]"},
    };
    for (const auto& [name, targetFile, host64Bit, line, expected] : kCases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(lineOf(registryScript(targetFile, "C:\\Tools\\", host64Bit), line), expected);
    }
}

TEST(RegistrationScriptsTest, BatchFileSelectsTheRegistryViewOn64BitWindows) {
    const std::string query =
        "\"REG.EXE\" QUERY \"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
        "PropertySystem\\PropertyHandlers\\.txt\"";
    const std::string import =
        "if errorlevel 1 \"REG.EXE\" IMPORT \"C:\\Users\\Ann\\AppData\\Roaming\\Kelvane\\Veskor\\"
        "Veskor_reg.reg\"";
    const std::string tail[] = {
        "del \"C:\\Users\\Ann\\AppData\\Roaming\\Kelvane\\Veskor\\Veskor_reg.reg\"",
        "del \"C:\\Users\\Ann\\AppData\\Roaming\\Kelvane\\Veskor\\Veskor_reg.bat\"",
        "exit",
    };
    const std::string dataPath = "C:\\Users\\Ann\\AppData\\Roaming\\Kelvane\\Veskor\\";

    EXPECT_EQ(registrationBatch("Plan.txt", dataPath, 1),
              crlfLines({"@echo off", "cls", query + " /reg:64", import + " /reg:64", tail[0],
                         tail[1], tail[2]}));
    EXPECT_EQ(registrationBatch("Plan.txt", dataPath, 0),
              crlfLines({"@echo off", "cls", query, import, tail[0], tail[1], tail[2]}));
}

TEST(RegistrationScriptsTest, RunScriptOpensFoldersInExplorerAndFilesDirectly) {
    EXPECT_EQ(runScript(RunTarget::Folder, "C:\\Docs", "C:\\Windows", "D:\\Veskor\\"),
              "@echo off\r\n"
              "\"C:\\Windows\\explorer.exe \" \"C:\\Docs\"\r\n"
              "del \"D:\\Veskor\\Veskor_run.bat\"\r\n");
    EXPECT_EQ(runScript(RunTarget::File, "C:\\Docs\\Plan.txt", "C:\\Windows", "D:\\Veskor\\"),
              "@echo off\r\n"
              "\"C:\\Docs\\Plan.txt\"\r\n"
              "del \"D:\\Veskor\\Veskor_run.bat\"\r\n");
}
