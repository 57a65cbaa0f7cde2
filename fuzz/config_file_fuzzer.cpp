// Feeds arbitrary bytes to the settings reader as "config.dat" and checks what must
// hold for any file: reading never crashes and succeeds (the file can be opened), and
// the settings it gave survive being written out and read back, value for value.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "config/config_file.h"
#include "fuzz/fuzz_files.h"

namespace {

bool sameOptions(const Options& a, const Options& b) {
    return a.optionsCreate00index == b.optionsCreate00index &&
           a.optionsCreateExpDescNonNTFS == b.optionsCreateExpDescNonNTFS &&
           a.optionsDefaultGUIFont == b.optionsDefaultGUIFont &&
           a.optionsDefaultGUIFontSize == b.optionsDefaultGUIFontSize &&
           a.optionsHighDPIGUIAdjust == b.optionsHighDPIGUIAdjust &&
           a.optionsAutoCreateExpDesc == b.optionsAutoCreateExpDesc &&
           a.optionsBgColor == b.optionsBgColor;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file = fuzzFolder() + "config.dat";
    SilentPrompter prompter;
    writeFuzzFile(file, std::string_view(reinterpret_cast<const char*>(data), size));

    Options read;
    if (processConfigFile(file, read, prompter) != ConfigResult::Read || prompter.shown != 0)
        std::abort();
    createConfigFile(file, read, prompter);
    Options again{.optionsCreate00index = -1, .optionsCreateExpDescNonNTFS = -1};
    if (processConfigFile(file, again, prompter) != ConfigResult::Read ||
        !sameOptions(read, again) || prompter.shown != 0)
        std::abort();
    return 0;
}
