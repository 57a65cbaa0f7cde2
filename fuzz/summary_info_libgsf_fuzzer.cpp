// Feeds arbitrary bytes to the property-set codec's update and hands every stream it
// rebuilds to libgsf, an independent reader: whatever set the update accepted, the
// Comments it wrote must read back there as the text saved, whatever code page the
// old set declared (none, 0, one the C library lacks, UTF-16) and whether the text
// fits that page or makes the set switch to UTF-8.
//
// The codec copies the header's system identifier and format identifier and never
// reads them; libgsf refuses a stream from an unknown kind of system and knows a
// Comments property only in a set named the summary information. Every input is
// given a valid pair, so that what is judged is the section the codec rebuilds.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "stores/summary_info_codec.h"
#include "tests/gsf_reader.h"

namespace {

// Windows 5.1 on Win32, then FMTID_SummaryInformation.
constexpr std::size_t kSystemIdAt = 4, kFormatIdAt = 28;
constexpr unsigned char kSystemId[4] = {0x05, 0x01, 0x02, 0x00};
constexpr unsigned char kSummaryInformation[16] = {0xE0, 0x85, 0x9F, 0xF2, 0xF9, 0x4F, 0x68, 0x10,
                                                   0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9};

template <std::size_t N>
void put(std::string& stream, std::size_t at, const unsigned char (&bytes)[N]) {
    if (stream.size() >= at + N)
        std::copy(std::begin(bytes), std::end(bytes), stream.begin() + static_cast<long>(at));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string stream(reinterpret_cast<const char*>(data), size);
    put(stream, kSystemIdAt, kSystemId);
    put(stream, kFormatIdAt, kSummaryInformation);
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
