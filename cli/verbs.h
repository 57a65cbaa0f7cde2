#pragma once

#include <optional>
#include <string>

#include "cli/session.h"

// One function per verb of veskor-cli, each in its own file; each returns the exit code.

int runGet(Session& session, const std::string& path);

struct SetCall {
    std::string path;
    std::optional<std::string> text;  // standard input when absent
    bool exportBox = false;
};
int runSet(Session& session, const SetCall& call);

int runStores(Session& session, const std::string& path);

struct LsCall {
    std::string folder;
    bool all = false;
    bool json = false;
};
int runLs(Session& session, const LsCall& call);

struct FindCall {
    std::string text;
    std::string folder;
    bool json = false;
};
int runFind(Session& session, const FindCall& call);

int runMv(Session& session, const std::string& source, const std::string& destination);
int runCp(Session& session, const std::string& source, const std::string& destination,
          bool recursive);

int runExport(Session& session, const std::string& folder);
// `file` empty: standard input.
int runImport(Session& session, const std::string& file);
