#include "core/load_sequence.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/store_fixture.h"

namespace {

class LoadSequenceTest : public StoreFixture {
protected:
    // A new target file (without streams) and no store files.
    void clearStores() {
        for (const std::string& path :
             {target(), target() + ".description", state_.target.indexFile, failsafeFile()})
            std::remove(path.c_str());
        dir_.write("docs/plan.txt", "x");
    }

    void fill(const std::string& stores) {
        if (stores.find('E') != std::string::npos)
            putExported("from exported");
        if (stores.find('O') != std::string::npos)
            putOldStream("from old stream");
        if (stores.find('S') != std::string::npos)
            putSummary("from summary");
        if (stores.find('I') != std::string::npos)
            putIndexEntry("from index");
        if (stores.find('F') != std::string::npos)
            putFailsafeRecord("from failsafe\r\n");
    }
};

TEST_F(LoadSequenceTest, TakesTheStoreOfHighestPrecedence) {
    // E exported file, O old stream, S summary stream, I folder index, F failsafe.
    struct Case {
        const char* stores;
        std::string text;
        std::string status;
    } const cases[] = {
        {"EOSIF", "from old stream", "Loaded from NTFS (old)"},
        {"ESIF", "from exported\r\n", "Loaded from exported description"},
        {"SIF", "from summary", "Loaded from NTFS"},
        {"IF", "from index\r\n", "Loaded from '00_Index.txt'"},
        {"F", "from failsafe\r\n", "Loaded from failsafe"},
        {"O", "from old stream", "Loaded from NTFS (old)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stores);
        clearStores();
        PlainEditorState editor;
        fill(c.stores);
        loadDescription(state_, editor);
        EXPECT_EQ(editor.text(), c.text);
        EXPECT_EQ(editor.status, c.status);
        EXPECT_FALSE(editor.updateBold());
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

TEST_F(LoadSequenceTest, OpensTheWindowForEditing) {
    putSummary("text");
    loadDescription(state_, editor_);
    EXPECT_EQ(editor_.caption, "plan.txt - Veskor");
    EXPECT_EQ(editor_.targetBox, target());
    EXPECT_EQ(editor_.openIcon, "file");
    EXPECT_TRUE(editor_.updateEnabled());
    EXPECT_TRUE(editor_.cancelEnabled && editor_.helpEnabled && editor_.optionsEnabled);
    EXPECT_EQ(editor_.timerInterval, 1000);
    EXPECT_EQ(state_.data.failsafeDBfile, failsafeFile());
}

TEST_F(LoadSequenceTest, ReadsAFolderLikeAFileAndShowsTheFolderIcon) {
    dir_.mkdir("docs/Old");
    setTarget("docs/Old");
    putIndexEntry("an old folder");
    loadDescription(state_, editor_);
    EXPECT_EQ(editor_.text(), "an old folder\r\n");
    EXPECT_EQ(editor_.openIcon, "folder");
}

TEST_F(LoadSequenceTest, ShortensLongNamesInTheCaption) {
    const std::string forty(40, 'n');
    const std::string fortyOne = "abc" + std::string(35, 'm') + "xyz";
    struct Case {
        std::string name;
        std::string caption;
    } const cases[] = {
        {forty, forty + " - Veskor"},
        {fortyOne, "abc..." + fortyOne.substr(4) + " - Veskor"},
        {"\xC3\xA9" + std::string(40, 'e'),
         "\xC3\xA9"
         "ee..." +
             std::string(37, 'e') + " - Veskor"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        dir_.write("docs/" + c.name, "x");
        setTarget("docs/" + c.name);
        PlainEditorState editor;
        loadDescription(state_, editor);
        EXPECT_EQ(editor.caption, c.caption);
    }
}

}  // namespace
