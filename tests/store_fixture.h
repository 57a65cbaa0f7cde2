#pragma once

#include <gtest/gtest.h>

#include <string>

#include "contracts/editor_state.h"
#include "contracts/shared_state.h"
#include "platform/code_page.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

// A target "docs/plan.txt" in a temporary folder, a data folder beside it, and a way to
// put a description into each store the way that store keeps it.
class StoreFixture : public ::testing::Test {
protected:
    StoreFixture();

    // Points the target paths at `relative` (a file or folder below the folder).
    void setTarget(const std::string& relative);
    const std::string& target() const { return state_.target.targetFileFullPathname; }
    std::string failsafeFile() const { return state_.data.failsafeDBpath + "ver1.7.dat"; }

    void putExported(const std::string& text) { write(target() + ".description", text + "\r\n"); }
    void putOldStream(const std::string& text);
    void putSummary(const std::string& text);
    void putIndexEntry(const std::string& text);
    void putFailsafeRecord(const std::string& lines) {
        write(failsafeFile(), beginLine() + "\r\n" + lines + endLine() + "\r\n");
    }

    std::string exported() const { return readFileBytes(target() + ".description"); }
    std::string index() const { return readFileBytes(state_.target.indexFile); }
    std::string failsafe() const { return readFileBytes(failsafeFile()); }
    std::string summaryText() const;
    // The begin and end lines of the target's failsafe record.
    std::string beginLine() const { return "Veskor failsafe DB 1.7 BEGIN " + upperCase(target()); }
    std::string endLine() const { return "Veskor failsafe DB 1.7 END " + upperCase(target()); }

    TempHome home_;
    TempDir dir_;
    SharedState state_;
    PlainEditorState editor_;
    ScriptedPrompter prompter_;

private:
    void write(const std::string& path, const std::string& bytes) {
        dir_.write(path.substr(dir_.path().size()), bytes);
    }
};
