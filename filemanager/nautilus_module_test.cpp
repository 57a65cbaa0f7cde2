// The GNOME Files module loaded as the file manager loads it, its providers driven with
// stand-in file objects on real files with real stores.
#include <gio/gio.h>
#include <gtest/gtest.h>
extern "C" {
#include <nautilus-extension.h>
}

#include <algorithm>
#include <functional>

#include "filemanager/module_host.h"
#include "filemanager/module_test_fixture.h"
#include "platform/xattr.h"

namespace {

// The loaded module's provider of the interface.
template <typename Interface>
Interface* provider(GType interfaceType) {
    return reinterpret_cast<Interface*>(moduleProvider(interfaceType));
}

class NautilusModuleTest : public ModuleFixture {
protected:
    static void SetUpTestSuite() {
        ModuleFixture::SetUpTestSuite();
        ASSERT_TRUE(loadNautilusModule(VESKOR_NAUTILUS_MODULE));
    }

    // What the info provider gives the column for the item, after it completed.
    std::string column(TestFileInfo* info) {
        EXPECT_TRUE(updateFileInfo({info})) << "never answered";
        return columnValue(info);
    }
    std::string column(const std::string& path) {
        TestFileInfo* info = newTestFileInfo(path);
        std::string value = column(info);
        g_object_unref(info);
        return value;
    }
};

TEST_F(NautilusModuleTest, ColumnShowsTheFirstLineThatGetPrints) {
    auto* columns = provider<NautilusColumnProvider>(NAUTILUS_TYPE_COLUMN_PROVIDER);
    ASSERT_NE(columns, nullptr);
    GList* list = nautilus_column_provider_get_columns(columns);
    expectTheDescriptionColumn(list);
    g_list_free_full(list, g_object_unref);
    expectTheColumnShowsWhatGetPrints([&](const std::string& path) { return column(path); });
    EXPECT_EQ(column(docs_ / "exported.txt.description"), "");
}

// The item was listed, then went before its description was read.
TEST_F(NautilusModuleTest, AnItemGoneBeforeReadingHasAnEmptyCell) {
    const std::string path = docs_.write("gone.txt", "x");
    describe(path, "Soon gone");
    TestFileInfo* info = newTestFileInfo(path);
    ASSERT_EQ(::unlink(path.c_str()), 0);
    EXPECT_EQ(column(info), "");
    g_object_unref(info);
}

// A save that changes only the folder's index or an exported file leaves the item
// itself untouched: the module tells the file manager that the item is stale.
TEST_F(NautilusModuleTest, StoresSharedByTheFolderMakeTheirItemsStale) {
    const std::string indexed = docs_.write("indexed.txt", "x");
    const std::string exported = docs_.write("exported.txt", "x");
    TestFileInfo* indexedInfo = newTestFileInfo(indexed);
    TestFileInfo* exportedInfo = newTestFileInfo(exported);
    ASSERT_EQ(column(indexedInfo), "");
    ASSERT_EQ(column(exportedInfo), "");

    docs_.write("00_index.txt", "indexed.txt  Indexed now\r\n");
    EXPECT_TRUE(runUntil([&] { return indexedInfo->invalidations > 0; }));
    EXPECT_EQ(column(indexedInfo), "Indexed now");

    const int before = indexedInfo->invalidations;
    const int exportedBefore = exportedInfo->invalidations;
    docs_.write("exported.txt.description", "Exported now\r\n");
    EXPECT_TRUE(runUntil([&] { return exportedInfo->invalidations > exportedBefore; }));
    EXPECT_EQ(column(exportedInfo), "Exported now");
    EXPECT_EQ(indexedInfo->invalidations, before) << "another item's exported file";
    g_object_unref(indexedInfo);
    g_object_unref(exportedInfo);
}

// GNOME Files asks about one item of a folder at a time and waits for each answer: the
// folder is read ahead once, the items after the first are answered at once, and an
// answer read ahead is never handed out after what it was read from changed.
TEST_F(NautilusModuleTest, AFolderReadAheadAnswersAtOnceUntilItsStoresChange) {
    std::vector<TestFileInfo*> items;
    for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt", "source.txt"})
        items.push_back(newTestFileInfo(docs_.write(name, "x")));
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        describe(docs_ / name, std::string("Old ") + name);
    describe(docs_ / "source.txt", "New stream");
    // The saves' changes to the failsafe database settle first.
    runUntil([] { return false; }, 1);
    InfoRequests requests;
    // The first may come before the folder was read ahead, or just after.
    ASSERT_TRUE(requests.ask(items[0]));
    const std::size_t first = requests.completedAtOnce();
    runUntil([] { return false; }, 1);
    ASSERT_TRUE(requests.ask(items[1]));
    EXPECT_EQ(requests.completedAtOnce(), first + 1) << "the second item waited for a read";
    EXPECT_EQ(columnValue(items[1]), "Old b.txt");

    const std::string summary = "\x05SummaryInformation";
    std::string stream;
    ASSERT_EQ(readStream(docs_ / "source.txt", summary, stream), StreamStatus::Ok);
    const struct {
        const char* change;
        std::function<void()> make;
        TestFileInfo* item;
        std::string text;
    } rows[] = {
        {"only the item's stream",
         [&] { ASSERT_EQ(replaceStream(docs_ / "c.txt", summary, stream), StreamStatus::Ok); },
         items[2], "New stream"},
        {"only the folder's index",
         [&] {
             docs_.write("00_index.txt",
                         readFileBytes(docs_ / "00_index.txt") + "d.txt        Indexed late\r\n");
         },
         items[3], "Indexed late"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.change);
        row.make();
        runUntil([] { return false; }, 1);
        ASSERT_TRUE(requests.ask(row.item));
        EXPECT_EQ(columnValue(row.item), row.text);
    }
    for (TestFileInfo* item : items)
        g_object_unref(item);
}

// A folder shown anew is asked about item by item again, with new file objects: once
// what was read ahead is used up, the folder is read ahead again.
TEST_F(NautilusModuleTest, AFolderShownAnewIsReadAheadAgain) {
    std::vector<std::string> paths;
    for (char name = 'a'; name < 'a' + 20; ++name) {
        std::string file(1, name);
        file += ".txt";
        paths.push_back(docs_.write(file, "x"));
    }
    std::size_t atOnce[2] = {};
    for (std::size_t& shown : atOnce) {
        if (&shown != atOnce)
            runUntil([] { return false; }, 2);
        std::vector<TestFileInfo*> items(paths.size());
        std::ranges::transform(paths, items.begin(), newTestFileInfo);
        InfoRequests requests;
        for (TestFileInfo* item : items)
            ASSERT_TRUE(requests.ask(item));
        shown = requests.completedAtOnce();
        for (TestFileInfo* item : items)
            g_object_unref(item);
    }
    EXPECT_GE(atOnce[0], 10u) << "the folder was not read ahead";
    EXPECT_GE(atOnce[1], 10u) << "the folder shown anew was not read ahead again";
}

TEST_F(NautilusModuleTest, EditDescriptionStartsTheEditorOnTheItem) {
    auto* menus = provider<NautilusMenuProvider>(NAUTILUS_TYPE_MENU_PROVIDER);
    ASSERT_NE(menus, nullptr);
    TestFileInfo* file = newTestFileInfo(docs_.write("a file.txt", "x"));
    TestFileInfo* other = newTestFileInfo(docs_.write("other.txt", "x"));
    TestFileInfo* folderInfo = newTestFileInfo(folder());

    GList* both = g_list_append(g_list_append(nullptr, file), other);
    EXPECT_EQ(nautilus_menu_provider_get_file_items(menus, both), nullptr) << "one item at a time";
    const struct {
        const char* menu;
        GList* items;
        std::string path;
    } rows[] = {
        {"item", nautilus_menu_provider_get_file_items(menus, both->next), docs_ / "other.txt"},
        {"background",
         nautilus_menu_provider_get_background_items(menus, NAUTILUS_FILE_INFO(folderInfo)),
         folder()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.menu);
        expectTheEditItem(
            row.items, [](gpointer item) { nautilus_menu_item_activate(NAUTILUS_MENU_ITEM(item)); },
            row.path);
        nautilus_menu_item_list_free(row.items);
    }
    g_list_free(both);
    for (TestFileInfo* info : {file, other, folderInfo})
        g_object_unref(info);
}

// The section's rows as "name: value" lines, once it has some.
std::string sectionText(GListModel* section) {
    runUntil([&] { return g_list_model_get_n_items(section) > 0; });
    std::string text;
    for (guint i = 0; i < g_list_model_get_n_items(section); ++i) {
        auto* row = NAUTILUS_PROPERTIES_ITEM(g_list_model_get_item(section, i));
        text += std::string(nautilus_properties_item_get_name(row)) + ": " +
                nautilus_properties_item_get_value(row) + "\n";
        g_object_unref(row);
    }
    return text;
}

TEST_F(NautilusModuleTest, PropertiesShowTheWholeTextAndItsSource) {
    auto* properties =
        provider<NautilusPropertiesModelProvider>(NAUTILUS_TYPE_PROPERTIES_MODEL_PROVIDER);
    ASSERT_NE(properties, nullptr);
    const std::string path = docs_.write("a.txt", "x");
    describe(path, "First line\nsecond line");
    const std::string status = statusOfGet(path);
    TestFileInfo* info = newTestFileInfo(path);
    GList* files = g_list_append(nullptr, info);
    GList* models = nautilus_properties_model_provider_get_models(properties, files);
    ASSERT_EQ(g_list_length(models), 1u);
    auto* model = NAUTILUS_PROPERTIES_MODEL(models->data);
    EXPECT_STREQ(nautilus_properties_model_get_title(model), "Description");
    GListModel* section = nautilus_properties_model_get_model(model);
    EXPECT_EQ(sectionText(section),
              "Description: First line\nsecond line\nSource: " + status + "\n");

    // After a save the file manager reads the item again and says it changed.
    describe(path, "Saved again");
    emitChanged(info);
    EXPECT_TRUE(runUntil([&] { return sectionText(section).starts_with("Description: Saved"); }))
        << sectionText(section);
    g_list_free_full(models, g_object_unref);
    g_list_free(files);
    g_object_unref(info);
}

}  // namespace
