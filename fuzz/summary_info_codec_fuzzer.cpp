// Feeds arbitrary bytes to the property-set codec as a stream read from a file, and
// checks what must hold for any input: nothing crashes, an update's output is no
// more than a constant factor larger than its input, and an update that recognised
// the stream leaves one that reads back the description it was given.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "stores/summary_info_codec.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view stream(reinterpret_cast<const char*>(data), size);
    (void)readSummaryInfoDesc(stream);

    // Text outside Windows-1252 makes a set of any code page change or switch pages.
    const std::string description = "fuzz \xCE\xA9\r\nline";
    std::string updated = updateSummaryInfo(stream, description);
    if (updated.size() > 4 * size + 1024)
        std::abort();
    if (updated != stream && readSummaryInfoDesc(updated) != description)
        std::abort();
    (void)updateSummaryInfo(stream, "");
    return 0;
}
