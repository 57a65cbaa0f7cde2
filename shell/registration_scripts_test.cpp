#include "shell/registration_scripts.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using namespace registrationScripts;

namespace {

// The lines of a text whose every line ends in CR LF; a stray CR or LF stays inside its
// line, where the comparison finds it.
std::vector<std::string> crlfLines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    EXPECT_EQ(start, text.size()) << "last line without CR LF";
    return lines;
}

}  // namespace

// The lines that depend on the target and the program folder; the fixed values between
// them only need to stay in place, which the line numbers check.
TEST(RegistrationScriptsTest, RegistryScriptForAFileWithoutExtensionOn64BitWindows) {
    const std::string clsid = "{8F2C6D10-B4E7-4A93-A5D2-1C7E09F3B6A8}";
    const std::string server =
        "@=\"C:\\\\Program Files\\\\Tools\\\\MetadataPropertyHandler (x64).dll\"";
    const std::map<std::size_t, std::string> expected = {
        {1, "Windows Registry Editor Version 5.00"},
        {3, "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\" + clsid + "]"},
        {11, server},
        {14, "[HKEY_CLASSES_ROOT\\CLSID\\" + clsid + "]"},
        {22, server},
        {25,
         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\PropertySystem\\"
         "PropertyHandlers\\Makefile]"},
        {26, "@=\"" + clsid + "\""},
        {44, "[HKEY_CURRENT_USER\\Software\\Classes\\Makefile]"},
        {52,
         "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\"
         "Makefile\\OpenWithProgids]"},
        {53, ""},
    };
    const auto lines = crlfLines(registryScript("Makefile", "C:\\Program Files\\Tools\\", 1));
    ASSERT_EQ(lines.size(), 53u);
    for (const auto& [number, line] : expected)
        EXPECT_EQ(lines[number - 1], line) << "line " << number;
}

TEST(RegistrationScriptsTest, RegistryScriptLinesDependOnHostAndExtension) {
    const auto line = [](const char* targetFile, int host64Bit, std::size_t number) {
        return crlfLines(registryScript(targetFile, "C:\\Tools\\", host64Bit)).at(number - 1);
    };
    EXPECT_EQ(line("Plan.txt", 0, 22), "@=\"C:\\\\Tools\\\\MetadataPropertyHandler (x86).dll\"");
    EXPECT_EQ(line("Plan.txt", 2, 26), "@=\"{3B9E41C2-7A05-4D6F-9C18-E2A4F7B0D531}\"");
    EXPECT_EQ(line("archive.tar.gz", 1, 40), "[HKEY_CLASSES_ROOT\\.gz]");
}

TEST(RegistrationScriptsTest, BatchFileSelectsTheRegistryViewOn64BitWindows) {
    const std::string data = "C:\\Users\\Ann\\AppData\\Roaming\\Kelvane\\Veskor\\";
    const std::string query =
        "\"REG.EXE\" QUERY \"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
        "PropertySystem\\PropertyHandlers\\.txt\"";
    const std::string import = "if errorlevel 1 \"REG.EXE\" IMPORT \"" + data + "Veskor_reg.reg\"";
    for (const auto& [host64Bit, view] : {std::pair{1, " /reg:64"}, {0, ""}}) {
        SCOPED_TRACE(host64Bit);
        EXPECT_EQ(crlfLines(registrationBatch("Plan.txt", data, host64Bit)),
                  (std::vector<std::string>{"@echo off", "cls", query + view, import + view,
                                            "del \"" + data + "Veskor_reg.reg\"",
                                            "del \"" + data + "Veskor_reg.bat\"", "exit"}));
    }
}
