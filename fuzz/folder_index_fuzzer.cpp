// Feeds arbitrary bytes to the folder index as "00_index.txt", for a short-form and a
// quoted-form name, and checks what must hold for any index: reading never crashes;
// a save always succeeds and the target's text then reads back first (continuation
// lines that followed no head line may trail it); a deletion leaves nothing readable
// for the target.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/fuzz_files.h"
#include "stores/folder_index.h"

namespace {

constexpr std::string_view kDescription = "fuzz \xCE\xA9\r\n\r\nlast line";

const std::string& indexFolder() {
    static const std::string folder = [] {
        const std::string path = fuzzFolder() + "docs/";
        std::filesystem::create_directories(path + "kept folder");
        writeFuzzFile(path + "kept.txt", "x");
        return path;
    }();
    return folder;
}

SharedState stateFor(const std::string& name) {
    SharedState state;
    state.target = {indexFolder() + name, name, indexFolder(), indexFolder() + "00_index.txt"};
    state.targetFileDesc = kDescription;
    return state;
}

void saveAndDelete(std::string_view bytes, const std::string& name) {
    SharedState state = stateFor(name);
    SilentPrompter prompter;
    writeFuzzFile(state.target.indexFile, bytes);
    (void)read00IndexFile(state.target);

    if (update00IndexFile(state, prompter) != WriteResult::Ok)
        std::abort();
    if (!read00IndexFile(state.target).starts_with("fuzz \xCE\xA9\r\n\r\nlast line\r\n"))
        std::abort();

    state.removeTargetFileDescFlag = 1;
    if (update00IndexFile(state, prompter) != WriteResult::Ok)
        std::abort();
    if (!read00IndexFile(state.target).empty())
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    saveAndDelete(bytes, "notes.txt");
    saveAndDelete(bytes, "My File.txt");
    return 0;
}
