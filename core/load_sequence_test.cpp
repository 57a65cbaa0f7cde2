#include "core/load_sequence.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "platform/xattr.h"
#include "tests/store_fixture.h"

namespace {

using LoadSequenceTest = StoreFixture;

// All five stores hold text; each row's store is emptied before the next row loads, the
// last store down to a record without lines, which leaves the selected placeholder.
TEST_F(LoadSequenceTest, TakesTheStoreOfHighestPrecedence) {
    putExported("from exported");
    putOldStream("from old stream");
    putSummary("from summary");
    putIndexEntry("from index");
    putFailsafeRecord("from failsafe\r\n");
    const std::tuple<std::string, std::string, std::function<void()>> rows[] = {
        {"from old stream", "Loaded from NTFS (old)", [&] { putOldStream(""); }},
        {"from exported\r\n", "Loaded from exported description",
         [&] { std::filesystem::remove(target() + ".description"); }},
        {"from summary", "Loaded from NTFS", [&] { putSummary(""); }},
        {"from index\r\n", "Loaded from '00_Index.txt'",
         [&] { std::filesystem::remove(state_.target.indexFile); }},
        {"from failsafe\r\n", "Loaded from failsafe", [&] { putFailsafeRecord(""); }},
        {"Enter file description here", "Description not found", [] {}},
    };
    for (const auto& [text, status, emptyTheStore] : rows) {
        SCOPED_TRACE(status);
        editor_ = PlainEditorState();
        loadDescription(state_, editor_);
        EXPECT_EQ(editor_.text(), text);
        EXPECT_EQ(editor_.status, status);
        emptyTheStore();
    }
    EXPECT_EQ(editor_.selectionStart, 0u);
    EXPECT_EQ(editor_.selectionLength, 27u);
    EXPECT_TRUE(editor_.textFocused);
}

// Names over 40 characters are cut in the middle of the caption; a folder opens for
// editing like a file, with its own icon.
TEST_F(LoadSequenceTest, NamesTheTargetInTheCaptionWithItsIcon) {
    const std::string forty(40, 'n'), fortyOne = "abc" + std::string(35, 'm') + "xyz";
    const std::tuple<std::string, std::string, bool> rows[] = {
        {forty, forty, false},
        {fortyOne, "abc..." + fortyOne.substr(4), false},
        {"\xC3\xA9" + std::string(40, 'e'),
         "\xC3\xA9" + std::string(2, 'e') + "..." + std::string(37, 'e'), false},
        {"Old", "Old", true},
    };
    for (const auto& [name, caption, folder] : rows) {
        SCOPED_TRACE(name);
        folder ? dir_.mkdir("docs/" + name) : dir_.write("docs/" + name, "x");
        setTarget("docs/" + name);
        putExported("described");
        editor_ = PlainEditorState();
        loadDescription(state_, editor_);
        EXPECT_EQ(editor_.text(), "described\r\n");
        EXPECT_EQ(editor_.caption, caption + " - Veskor");
        EXPECT_EQ(editor_.openIcon, folder ? "folder" : "file");
        EXPECT_TRUE(editor_.updateEnabled() && editor_.cancelEnabled && editor_.optionsEnabled);
    }
}

// The comment and descript.ion are read only after every store of the program's own;
// a comment that differs from the text loaded elsewhere is noted in the status.
TEST_F(LoadSequenceTest, OtherProgramsComeLastAndAnEditedCommentIsNoted) {
    dir_.write("docs/Descript.ion",
               "\xEF\xBB\xBF"
               "plan.txt From\xC2\xA0"
               "commander\n");
    auto putComment = [&](const std::string& text) {
        ASSERT_EQ(text.empty() ? removeStream(target(), "xdg.comment")
                               : replaceStream(target(), "xdg.comment", text),
                  StreamStatus::Ok);
    };
    const std::tuple<std::string, std::string, std::string, std::function<void()>> rows[] = {
        {"From the file manager", "From the file manager", "Loaded from file manager comment",
         [] {}},
        {"", "From\r\ncommander", "Loaded from descript.ion", [&] { putSummary("Own\r\ntext"); }},
        {"Own\ntext", "Own\r\ntext", "Loaded from NTFS", [] {}},
        {"Edited", "Own\r\ntext", "Loaded from NTFS - file manager comment differs",
         [&] {
             putFailsafeRecord("");
             putSummary("");
         }},
        {"Edited", "Edited", "Loaded from file manager comment", [] {}},
    };
    for (const auto& [comment, text, status, nextStores] : rows) {
        SCOPED_TRACE(status);
        putComment(comment);
        editor_ = PlainEditorState();
        loadDescription(state_, editor_);
        EXPECT_EQ(editor_.text(), text);
        EXPECT_EQ(editor_.status, status);
        nextStores();
    }
}

}  // namespace
