// Feeds arbitrary bytes to the descript.ion store as the file's content, for a bare, a
// quoted and a not-UTF-8 name, and checks what must hold for any file: reading never crashes; after
// the target's entry is written it reads back exactly, whatever the file's encoding (a text
// that an 8-bit file cannot hold is left out of it instead); after it is removed the file
// is gone or has no entry for the target.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "stores/descript_ion.h"

namespace {

constexpr std::string_view kDescription = "fuzz \xC3\xA9t\xC3\xA9\r\n\r\nlast line";
constexpr std::string_view kBeyondWindows1252 = "fuzz \xCE\xA9\r\nlast line";

void writeAndRemove(std::string_view bytes, std::string_view name) {
    (void)descriptionIn(bytes, name);

    std::optional<std::string> written = withEntry(bytes, name, kDescription);
    if (!written || descriptionIn(*written, name) != kDescription)
        std::abort();

    std::optional<std::string> removed = withEntry(*written, name, std::nullopt);
    if (removed && descriptionIn(*removed, name))
        std::abort();

    written = withEntry(bytes, name, kBeyondWindows1252);
    std::optional<std::string> read = written ? descriptionIn(*written, name) : std::nullopt;
    if (read && *read != kBeyondWindows1252)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    writeAndRemove(bytes, "plan.txt");
    writeAndRemove(bytes, "My Plan.txt");
    writeAndRemove(bytes,
                   "caf\xE9 \xC3\xA9"
                   ".txt");  // a name that is not UTF-8
    return 0;
}
