#include "cli/cli.h"

#include <CLI/CLI.hpp>

#include <ostream>
#include <sstream>

#include "cli/verbs.h"
#include "core/escaped_text.h"

namespace {

constexpr const char* kFooter = R"(Each verb has its own help: veskor-cli VERB --help.

  get PATH           the description, ending in one line break; where it was
                     found goes to standard error ("Loaded from NTFS")
  set [--export] [--yes] PATH [TEXT]
                     store TEXT, or standard input without its final line
                     break, in every store as the editor's Update does, so
                     `get F | set F` changes nothing; an empty text deletes
                     the description (with --yes)
  stores PATH        what every store holds, in the order they are read
  ls [-a] [--json] [DIR]
                     NAME<TAB>FIRST LINE for each described entry of DIR, by
                     name in byte order; -a lists the others too; --json
                     prints {"path", "description", "source"} per line
  find [--json] TEXT [DIR]
                     the full path of every file and folder under DIR whose
                     description contains TEXT, letter case ignored; links
                     to folders are not followed
  mv SRC DST         move as mv does, across file systems too, and carry the
                     description in every store
  cp [-r] SRC DST    copy as cp -a does; DST gets SRC's description in
                     every store
  export [DIR]       every described entry under DIR as JSON lines (as ls
                     --json); a name that is not UTF-8 also comes as its
                     bytes in hexadecimal, "path_hex", which import uses
  import [FILE]      store each JSON line's description (standard input by
                     default) as set --yes does; reports what was stored and
                     which paths were skipped

Paths are taken exactly as given: a quote at either end is part of the
name. DIR defaults to the current folder; relative paths start there. On a
terminal, find, export, import and cp -r show a progress line on standard
error, and names and descriptions show control characters escaped (ESC as
\x1b); in a pipe they are exact. JSON lines and messages escape them always.
Messages go to standard error.

Exit codes: 0 done; 1 something failed or a question was answered No (the
rest was still done); 2 refused: a missing or refused target, an existing
DST (nothing changes); when PATH is gone but PATH.description exists, its
text is printed, read only; 3 nothing found; 4 the save ended without
storing; 64 a wrong call.)";

// What the options of all verbs fill in.
struct Call {
    std::string verb;
    std::string path, destination, text;
    std::string folder = ".";
    bool exportBox = false, yes = false, all = false, json = false, recursive = false;
    bool hasText = false;
};

// A verb that, when called, names itself in `call`.
CLI::App* addVerb(CLI::App& app, Call& call, const char* name, const char* description) {
    CLI::App* sub = app.add_subcommand(name, description);
    sub->callback([&call, name] { call.verb = name; });
    return sub;
}

// The verbs that read or write the description of one path.
void addPathVerbs(CLI::App& app, Call& call) {
    addVerb(app, call, "get", "Print the description of PATH; exit 3 when there is none")
        ->add_option("PATH", call.path)
        ->required();

    CLI::App* set =
        addVerb(app, call, "set", "Store TEXT (or standard input) as the description of PATH");
    set->add_flag("--export", call.exportBox, "also write PATH.description");
    set->add_flag("--yes", call.yes, "answer Yes to every question (otherwise No)");
    set->add_option("PATH", call.path)->required();
    set->add_option("TEXT", call.text)->each([&call](const std::string&) { call.hasText = true; });

    addVerb(app, call, "stores", "Show what every store holds for PATH")
        ->add_option("PATH", call.path)
        ->required();
}

// The verbs that look through a folder.
void addSearchVerbs(CLI::App& app, Call& call) {
    CLI::App* ls =
        addVerb(app, call, "ls", "List the described entries of DIR: NAME<TAB>FIRST LINE");
    ls->add_flag("-a,--all", call.all, "list the entries without a description too");
    ls->add_flag("--json", call.json, "one {\"path\", \"description\", \"source\"} per line");
    ls->add_option("DIR", call.folder);

    CLI::App* find = addVerb(app, call, "find",
                             "Find what under DIR has TEXT in its description; exit 3 "
                             "when nothing has");
    find->add_flag("--json", call.json, "JSON lines, as ls --json");
    find->add_option("TEXT", call.text)->required();
    find->add_option("DIR", call.folder);
}

// The verbs that move or copy files with their descriptions.
void addTransferVerbs(CLI::App& app, Call& call) {
    CLI::App* mv =
        addVerb(app, call, "mv", "Move SRC to DST with its description; an existing DST exits 2");
    CLI::App* cp =
        addVerb(app, call, "cp", "Copy SRC to DST with its description; an existing DST exits 2");
    cp->add_flag("-r,-R,--recursive", call.recursive, "copy a folder with everything in it");
    for (CLI::App* sub : {mv, cp}) {
        sub->add_option("SRC", call.path)->required();
        sub->add_option("DST", call.destination)->required();
    }
}

// The verbs that carry the descriptions of a whole tree as JSON lines.
void addJsonVerbs(CLI::App& app, Call& call) {
    addVerb(app, call, "export", "Write every described entry under DIR as JSON lines")
        ->add_option("DIR", call.folder);
    addVerb(app, call, "import",
            "Store the descriptions of JSON lines from FILE or standard input; exit 1 "
            "when any was skipped")
        ->add_option("FILE", call.path);
}

// In the order --help lists them.
void addVerbs(CLI::App& app, Call& call) {
    addPathVerbs(app, call);
    addSearchVerbs(app, call);
    addTransferVerbs(app, call);
    addJsonVerbs(app, call);
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
        app.require_subcommand(1);
        Call call;
        addVerbs(app, call);
        // After the verbs, which would otherwise inherit it.
        app.footer(kFooter);
        std::vector<std::string> reversed(args.rbegin(), args.rend());
        if (!reversed.empty() && reversed.back() == "help")
            reversed.back() = "--help";
        try {
            app.parse(reversed);
        } catch (const CLI::ParseError& e) {
            // A wrong call's message quotes the arguments, which may be file names.
            std::ostringstream complaint;
            int code = app.exit(e, streams.out, complaint);
            streams.err << escapedControls(complaint.str(), "\n");
            return code == 0 ? kDone : kUsage;
        }
        return runVerb(appPath, streams, call);
    } catch (const std::exception& e) {
        streams.err << "veskor-cli: " << e.what() << '\n';
        return kFailed;
    }
}
