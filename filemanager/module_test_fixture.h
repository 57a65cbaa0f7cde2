#pragma once

#include <glib-object.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "tests/store_samples.h"
#include "tests/temp_dir.h"

// Runs the main context until `done` or the time passed; each file manager's host
// defines it.
bool runUntil(const std::function<bool()>& done, int seconds);

// A loaded module's surroundings: a home whose stores veskor-cli reads and writes, a
// folder "docs" of items, and an editor stand-in that records what it was started on.
class ModuleFixture : public ::testing::Test {
protected:
    // Once per process: a module reads from the data folder it first found.
    static void SetUpTestSuite() {
        if (home_)
            return;
        home_ = new TempHome;
        program_ = new TempDir;
        recorder_ = program_->write("recorder",
                                    "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.args.tmp\" "
                                    "&& mv \"$0.args.tmp\" \"$0.args\"\n");
        ASSERT_EQ(::chmod(recorder_.c_str(), 0755), 0);
        g_setenv("VESKOR_EDITOR_PROGRAM", recorder_.c_str(), TRUE);
    }

    int cli(const std::vector<std::string>& args) {
        std::istringstream in;
        out_.str("");
        err_.str("");
        return runCli(args, program_->path(), {in, out_, err_, false});
    }
    void describe(const std::string& path, const std::string& text) {
        ASSERT_EQ(cli({"set", path, text}), 0) << err_.str();
    }
    std::vector<std::string> describeOnePerStore() {
        return ::describeOnePerStore(
            docs_, home_->dataHome() + "/Kelvane/Veskor/failsafe db/ver1.7.dat",
            [&](const std::string& path, const std::string& text) { describe(path, text); });
    }
    // The module's one column, named and labelled for descriptions.
    static void expectTheDescriptionColumn(GList* columns) {
        ASSERT_EQ(g_list_length(columns), 1u);
        char *id = nullptr, *attribute = nullptr, *label = nullptr;
        g_object_get(columns->data, "name", &id, "attribute", &attribute, "label", &label, nullptr);
        EXPECT_STREQ(id, "veskor_description");
        EXPECT_STREQ(attribute, "veskor_description");
        EXPECT_STREQ(label, "Description");
        for (char* text : {id, attribute, label})
            g_free(text);
    }
    // Each item described in one store shows in `column` the first line `get` prints.
    void expectTheColumnShowsWhatGetPrints(
        const std::function<std::string(const std::string& path)>& column) {
        for (const std::string& name : describeOnePerStore()) {
            SCOPED_TRACE(name);
            const std::string expected = firstLineOfGet(docs_ / name);
            EXPECT_EQ(column(docs_ / name), expected);
            EXPECT_EQ(name == "none.txt", expected.empty());
        }
    }
    // The menu's one item, "Edit description", starts the editor on the path.
    void expectTheEditItem(GList* items, const std::function<void(gpointer item)>& activate,
                           const std::string& path) {
        ASSERT_EQ(g_list_length(items), 1u);
        char* label = nullptr;
        g_object_get(items->data, "label", &label, nullptr);
        EXPECT_STREQ(label, "Edit description");
        g_free(label);
        activate(items->data);
        EXPECT_EQ(editorArguments(), path + "\n");
    }
    // What `get` prints: the text's first line, and the status line without its end.
    std::string firstLineOfGet(const std::string& path) {
        if (cli({"get", path}) != 0)
            return "";
        const std::string text = out_.str();
        return text.substr(0, text.find('\n'));
    }
    std::string statusOfGet(const std::string& path) {
        cli({"get", path});
        const std::string status = err_.str();
        return status.substr(0, status.find('\n'));
    }
    // Runs until the editor stand-in was started; the arguments it was given.
    std::string editorArguments() {
        const std::string args = recorder_ + ".args";
        runUntil([&] { return g_file_test(args.c_str(), G_FILE_TEST_EXISTS); }, 5);
        std::string given = readFileBytes(args);
        ::unlink(args.c_str());
        return given;
    }
    std::string folder() const { return docs_.path().substr(0, docs_.path().size() - 1); }

    static inline TempHome* home_ = nullptr;
    static inline TempDir* program_ = nullptr;
    static inline std::string recorder_;
    TempDir docs_;
    std::ostringstream out_, err_;
};
