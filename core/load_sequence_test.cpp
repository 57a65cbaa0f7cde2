#include "core/load_sequence.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/store_fixture.h"

namespace {

class LoadSequenceTest : public StoreFixture {
protected:
    // Starts from a new target file (without streams) and no store files, then fills
    // the stores named by letter: E exported file, O old stream, S summary stream,
    // I folder index, F failsafe.
    void fillOnly(const std::string& stores) {
        for (const std::string& path :
             {target(), target() + ".description", state_.target.indexFile, failsafeFile()})
            std::remove(path.c_str());
        dir_.write("docs/plan.txt", "x");
        auto has = [&](char store) { return stores.find(store) != std::string::npos; };
        if (has('E'))
            putExported("from exported");
        if (has('O'))
            putOldStream("from old stream");
        if (has('S'))
            putSummary("from summary");
        if (has('I'))
            putIndexEntry("from index");
        if (has('F'))
            putFailsafeRecord("from failsafe\r\n");
    }
};

TEST_F(LoadSequenceTest, TakesTheStoreOfHighestPrecedence) {
    struct Case {
        const char* stores;
        std::string text, status;
    } const cases[] = {
        {"EOSIF", "from old stream", "Loaded from NTFS (old)"},
        {"ESIF", "from exported\r\n", "Loaded from exported description"},
        {"SIF", "from summary", "Loaded from NTFS"},
        {"IF", "from index\r\n", "Loaded from '00_Index.txt'"},
        {"F", "from failsafe\r\n", "Loaded from failsafe"},
        {"O", "from old stream", "Loaded from NTFS (old)"},
    };
    for (const auto& [stores, text, status] : cases) {
        SCOPED_TRACE(stores);
        fillOnly(stores);
        PlainEditorState editor;
        loadDescription(state_, editor);
        EXPECT_EQ(editor.text(), text);
        EXPECT_EQ(editor.status, status);
    }
}

TEST_F(LoadSequenceTest, ShowsTheSelectedPlaceholderWhenNoStoreHasText) {
    putFailsafeRecord("");  // a record that holds no line
    editor_.setUpdateBold(true);
    loadDescription(state_, editor_);
    EXPECT_EQ(editor_.text(), "Enter file description here");
    EXPECT_EQ(editor_.status, "Description not found");
    EXPECT_EQ(editor_.selectionStart, 0u);
    EXPECT_EQ(editor_.selectionLength, 27u);
    EXPECT_TRUE(editor_.textFocused);
    EXPECT_FALSE(editor_.updateBold());
}

TEST_F(LoadSequenceTest, OpensAFolderForEditingLikeAFile) {
    dir_.mkdir("docs/Old");
    setTarget("docs/Old");
    putIndexEntry("an old folder");
    loadDescription(state_, editor_);
    EXPECT_EQ(editor_.text(), "an old folder\r\n");
    EXPECT_EQ(editor_.caption, "Old - Veskor");
    EXPECT_EQ(editor_.targetBox, target());
    EXPECT_EQ(editor_.openIcon, "folder");
    EXPECT_TRUE(editor_.updateEnabled() && editor_.cancelEnabled && editor_.optionsEnabled);
    EXPECT_EQ(editor_.timerInterval, 1000);
}

TEST_F(LoadSequenceTest, ShortensLongNamesInTheCaption) {
    const std::string forty(40, 'n'), fortyOne = "abc" + std::string(35, 'm') + "xyz";
    const std::pair<std::string, std::string> cases[] = {
        {forty, forty},
        {fortyOne, "abc..." + fortyOne.substr(4)},
        {"\xC3\xA9" + std::string(40, 'e'),
         "\xC3\xA9" + std::string(2, 'e') + "..." + std::string(37, 'e')},
    };
    for (const auto& [name, caption] : cases) {
        SCOPED_TRACE(name);
        dir_.write("docs/" + name, "x");
        setTarget("docs/" + name);
        PlainEditorState editor;
        loadDescription(state_, editor);
        EXPECT_EQ(editor.caption, caption + " - Veskor");
    }
}

}  // namespace
