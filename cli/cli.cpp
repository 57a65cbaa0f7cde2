#include "cli/cli.h"

#include <CLI/CLI.hpp>

#include <ostream>

#include "cli/verbs.h"

namespace {

constexpr const char* kFooter =
    R"(Paths: a relative path starts at the current folder. DIR defaults to it.
Descriptions are printed with LF line breaks. A refused or missing target
exits 2; when PATH is gone but PATH.description exists, `get` prints its text
(read only). Messages go to standard error; on a terminal, find, export,
import and cp -r show a progress line there.

Exit codes: 0 done; 1 something failed or a question was answered No (the
rest was still done); 2 refused (missing target, existing destination);
3 nothing found; 4 the save ended without storing; 64 a wrong call.)";

// What the options of all verbs fill in.
struct Call {
    std::string verb;
    std::string path, destination, text;
    std::string folder = ".";
    bool exportBox = false, yes = false, all = false, json = false, recursive = false;
    bool hasText = false;
};

void addVerbs(CLI::App& app, Call& call) {
    auto verb = [&](const char* name, const char* description) {
        CLI::App* sub = app.add_subcommand(name, description);
        sub->callback([&call, name] { call.verb = name; });
        return sub;
    };
    CLI::App* get = verb("get",
                         "Print the description of PATH (a file or folder), ending in one line "
                         "break; where it was found goes to standard error (\"Loaded from "
                         "NTFS\"). Exit 3 when there is none.");
    get->add_option("PATH", call.path)->required();

    CLI::App* set = verb("set",
                         "Store TEXT, or standard input without its final line break, as the "
                         "description of PATH in every store, as the editor's Update does "
                         "(`get F | set F` changes nothing). An empty text deletes it (with "
                         "--yes). Exit 1 when a store failed or a question was answered No, 4 "
                         "when the save ended without storing.");
    set->add_flag("--export", call.exportBox, "also write PATH.description");
    set->add_flag("--yes", call.yes, "answer Yes to every question (otherwise No)");
    set->add_option("PATH", call.path)->required();
    set->add_option("TEXT", call.text)->each([&call](const std::string&) { call.hasText = true; });

    CLI::App* stores = verb("stores",
                            "Show what every store holds for PATH, in the order the "
                            "editor reads them.");
    stores->add_option("PATH", call.path)->required();

    CLI::App* ls = verb("ls",
                        "List the entries of DIR that have a description, by name in byte "
                        "order: NAME, a tab, the description's first line.");
    ls->add_flag("-a,--all", call.all, "list the entries without a description too");
    ls->add_flag("--json", call.json,
                 "one JSON object per line: {\"path\", \"description\", \"source\"}");
    ls->add_option("DIR", call.folder);

    CLI::App* find = verb("find",
                          "Print the full path of every file and folder under DIR (links to "
                          "folders are not followed) whose description contains TEXT, "
                          "ignoring letter case. Exit 3 when none does.");
    find->add_flag("--json", call.json, "JSON lines, as ls --json");
    find->add_option("TEXT", call.text)->required();
    find->add_option("DIR", call.folder);

    CLI::App* mv = verb("mv",
                        "Move SRC to DST as mv does (across file systems too) and carry its "
                        "description in every store. An existing DST is refused (exit 2).");
    CLI::App* cp = verb("cp",
                        "Copy SRC to DST as cp -a does and give DST the same description in "
                        "every store. An existing DST is refused (exit 2).");
    cp->add_flag("-r,-R,--recursive", call.recursive, "copy a folder with everything in it");
    for (CLI::App* sub : {mv, cp}) {
        sub->add_option("SRC", call.path)->required();
        sub->add_option("DST", call.destination)->required();
    }

    CLI::App* exporting = verb("export",
                               "Write every described entry under DIR as JSON lines (as ls "
                               "--json) to standard output.");
    exporting->add_option("DIR", call.folder);

    CLI::App* importing = verb("import",
                               "Store the description of every JSON line of FILE (standard "
                               "input by default) through the full save, as set --yes does; "
                               "report how many were stored and which paths were skipped. "
                               "Exit 1 when any was skipped.");
    importing->add_option("FILE", call.path);
}

int runVerb(const std::string& appPath, CliStreams streams, const Call& call) {
    Session session(appPath, streams, call.yes || call.verb == "import");
    if (call.verb == "get")
        return runGet(session, call.path);
    if (call.verb == "set")
        return runSet(session, {call.path, call.hasText ? std::optional(call.text) : std::nullopt,
                                call.exportBox});
    if (call.verb == "stores")
        return runStores(session, call.path);
    if (call.verb == "ls")
        return runLs(session, {call.folder, call.all, call.json});
    if (call.verb == "find")
        return runFind(session, {call.text, call.folder, call.json});
    if (call.verb == "mv")
        return runMv(session, call.path, call.destination);
    if (call.verb == "cp")
        return runCp(session, call.path, call.destination, call.recursive);
    if (call.verb == "export")
        return runExport(session, call.folder);
    return runImport(session, call.path);
}

}  // namespace

int runCli(const std::vector<std::string>& args, const std::string& appPath, CliStreams streams) {
    try {
        CLI::App app(
            "Read, write, list, search, move and copy the descriptions of files and "
            "folders.",
            "veskor-cli");
        app.footer(kFooter);
        app.require_subcommand(1);
        Call call;
        addVerbs(app, call);
        std::vector<std::string> reversed(args.rbegin(), args.rend());
        if (!reversed.empty() && reversed.back() == "help")
            reversed.back() = "--help";
        try {
            app.parse(reversed);
        } catch (const CLI::ParseError& e) {
            int code = app.exit(e, streams.out, streams.err);
            return code == 0 ? kDone : kUsage;
        }
        return runVerb(appPath, streams, call);
    } catch (const std::exception& e) {
        streams.err << "veskor-cli: " << e.what() << '\n';
        return kFailed;
    }
}
