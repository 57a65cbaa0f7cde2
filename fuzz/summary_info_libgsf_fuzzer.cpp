// Feeds arbitrary bytes to the property-set codec's update and hands every stream it
// rebuilds to libgsf, an independent reader: whatever set the update accepted, the
// Comments it wrote must read back there as the text saved, whatever code page the
// old set declared (none, 0, one the C library lacks, UTF-16) and whether the text
// fits that page or makes the set switch to UTF-8.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "stores/summary_info_codec.h"
#include "tests/gsf_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view stream(reinterpret_cast<const char*>(data), size);
    for (const std::string description :
         {"fuzz caf\xC3\xA9\r\nline", "fuzz \xCE\xA9 \xE2\x82\xAC"}) {
        std::string updated = updateSummaryInfo(stream, description);
        // An update that left the stream alone did not accept it.
        if (readSummaryInfoDesc(updated) != description)
            continue;
        if (commentsReadByLibgsf(updated) != description)
            std::abort();
    }
    return 0;
}
