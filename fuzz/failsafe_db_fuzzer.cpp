// Feeds arbitrary bytes to the failsafe database as the file "ver1.7.dat" and checks
// what must hold for any database: reading never crashes; a save always succeeds and
// leaves exactly the new text readable for the target; a save does not change another
// target's record unless the file held a record of the saved target (a damaged one
// may swallow what follows it); a deletion leaves no readable record of the target.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/fuzz_files.h"
#include "stores/failsafe_db.h"

namespace {

constexpr std::string_view kDescription = "fuzz \xCE\xA9\r\n\r\nlast line";

SharedState stateFor(const std::string& db) {
    SharedState state;
    state.data.failsafeDBpath = fuzzFolder();
    state.data.failsafeDBfile = db;
    state.target.targetFileFullPathname = "/docs/plan.txt";
    state.targetFileDesc = kDescription;
    return state;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string db = fuzzFolder() + "ver1.7.dat";
    SharedState state = stateFor(db);
    SilentPrompter prompter;

    writeFuzzFile(db, bytes);
    (void)readFailsafeDB(db, "/docs/plan.txt");
    const auto otherBefore = readFailsafeDB(db, "/docs/other.txt");

    if (updateFailsafeDB(state, prompter) != WriteResult::Ok)
        std::abort();
    if (readFailsafeDB(db, "/docs/plan.txt") != std::string(kDescription) + "\r\n")
        std::abort();
    if (bytes.find("BEGIN /DOCS/PLAN.TXT") == std::string_view::npos &&
        readFailsafeDB(db, "/docs/other.txt") != otherBefore)
        std::abort();

    state.removeTargetFileDescFlag = 1;
    if (updateFailsafeDB(state, prompter) != WriteResult::Ok)
        std::abort();
    if (readFailsafeDB(db, "/docs/plan.txt"))
        std::abort();
    return 0;
}
