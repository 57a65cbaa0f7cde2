#include "cli/transfer.h"
#include "cli/verbs.h"

int runCp(Session& session, const std::string& source, const std::string& destination,
          bool recursive) {
    return runTransfer(
        session,
        {.source = source, .destination = destination, .keepSource = true, .recursive = recursive});
}
