#pragma once

#include <string>

// The state that the whole program shares for one run: where its data lives, which
// target it edits, the seven settings, and the description a save is writing. The
// application owns one SharedState and hands it down by reference.
//
// Paths are UTF-8. Folder paths end in "/"; text values use CR LF line breaks.

// The seven settings of config.dat. Values are numbers as read from the file (a
// hand-edited file may hold "2.5"); a switch is on only when it equals 1, and the
// three list settings are 0-based positions that may lie outside their lists.
struct Options {
    double optionsCreate00index = 1;
    double optionsCreateExpDescNonNTFS = 1;
    double optionsDefaultGUIFont = 0;
    double optionsDefaultGUIFontSize = 0;
    double optionsHighDPIGUIAdjust = 0;
    double optionsAutoCreateExpDesc = 0;
    double optionsBgColor = 0;
};

// What a store writer reports. Error comes after the writer has shown its own message.
enum class WriteResult { Ok, Error };

// A switch setting counts as on only when it is exactly 1.
inline bool isOn(double option) {
    return option == 1;
}

struct DataPaths {
    std::string appPath;         // the program folder
    std::string appDataPath;     // the per-user data folder, or appPath in portable mode
    std::string failsafeDBpath;  // the "failsafe db" folder
    std::string failsafeDBfile;  // failsafeDBpath + "ver1.7.dat"
    std::string configFile;      // appDataPath + "config.dat"
};

struct TargetPaths {
    std::string targetFileFullPathname;  // the target's full path, file or folder
    std::string targetFile;              // its last component
    std::string indexFilePath;           // its folder, ending in "/"
    std::string indexFile;               // indexFilePath + "00_index.txt"
};

struct SharedState {
    DataPaths data;
    TargetPaths target;
    Options options;
    // The description that the failsafe, exported-file and index writers store: the
    // editor's text with the failsafe marker texts blanked.
    std::string targetFileDesc;
    // 1 while a save deletes the description: the file stores remove their entry.
    int removeTargetFileDescFlag = 0;
};
