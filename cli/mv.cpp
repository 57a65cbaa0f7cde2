#include "cli/transfer.h"
#include "cli/verbs.h"

int runMv(Session& session, const std::string& source, const std::string& destination) {
    return runTransfer(session, {.source = source, .destination = destination});
}
