// Feeds arbitrary bytes to the version page's evaluation and checks what must hold for
// any page: nothing crashes, the announced version holds no line break or blank, and
// a page announcing our own version is never newer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "update/version_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view page(reinterpret_cast<const char*>(data), size);
    const std::string announced = announcedVersion(page);
    if (announced.find_first_of("\r\n ") != std::string::npos)
        std::abort();
    const bool newer = announcesNewerVersion(page, "002.003.002");
    if (announced == "002.003.002" && newer)
        std::abort();
    return 0;
}
