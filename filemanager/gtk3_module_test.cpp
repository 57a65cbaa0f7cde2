// The Caja, Nemo and Thunar modules loaded as each file manager loads them, their
// providers driven with stand-in file objects on real files with real stores.
#include <gtest/gtest.h>
#include <gtk/gtk.h>
extern "C" {
#include <libcaja-extension/caja-column-provider.h>
#include <libcaja-extension/caja-info-provider.h>
#include <libcaja-extension/caja-menu-provider.h>
#include <libcaja-extension/caja-property-page-provider.h>
#include <libnemo-extension/nemo-column-provider.h>
#include <libnemo-extension/nemo-info-provider.h>
#include <libnemo-extension/nemo-menu-provider.h>
#include <libnemo-extension/nemo-property-page-provider.h>
#include <thunarx/thunarx.h>
}

#include "filemanager/gtk3_module_host.h"
#include "filemanager/gtk3_test_file_info.h"
#include "filemanager/module_test_fixture.h"

namespace {

template <typename Interface>
Interface* provider(FileManager manager, GType interfaceType) {
    return reinterpret_cast<Interface*>(moduleProvider(manager, interfaceType));
}

// A widget-valued property of a Caja or Nemo property page.
GtkWidget* pageWidget(gpointer page, const char* property) {
    GtkWidget* found = nullptr;
    g_object_get(page, property, &found, nullptr);
    g_object_unref(found);  // the page keeps it
    return found;
}

// Caja's and Nemo's property pages are the same objects under their own names.
struct PropertyPageObject {
    static std::string title(gpointer page) {
        return gtk_label_get_text(GTK_LABEL(pageWidget(page, "label")));
    }
    static GtkWidget* body(gpointer page) { return pageWidget(page, "page"); }
    static void freePages(GList* pages) { g_list_free_full(pages, g_object_unref); }
};

// Each file manager's calls under the same names.
struct Caja : PropertyPageObject {
    static constexpr FileManager manager = FileManager::caja;
    static constexpr const char* module = VESKOR_CAJA_MODULE;
    static GList* columns() {
        return caja_column_provider_get_columns(
            provider<CajaColumnProvider>(manager, CAJA_TYPE_COLUMN_PROVIDER));
    }
    static bool update(StandInFile* file, GClosure* complete) {
        CajaOperationHandle* handle = nullptr;
        return caja_info_provider_update_file_info(
                   provider<CajaInfoProvider>(manager, CAJA_TYPE_INFO_PROVIDER),
                   reinterpret_cast<CajaFileInfo*>(file), complete,
                   &handle) == CAJA_OPERATION_IN_PROGRESS;
    }
    static CajaMenuProvider* menus() {
        return provider<CajaMenuProvider>(manager, CAJA_TYPE_MENU_PROVIDER);
    }
    static GList* fileItems(GtkWidget* window, GList* files) {
        return caja_menu_provider_get_file_items(menus(), window, files);
    }
    static GList* folderItems(GtkWidget* window, StandInFile* folder) {
        return caja_menu_provider_get_background_items(menus(), window,
                                                       reinterpret_cast<CajaFileInfo*>(folder));
    }
    static void activate(gpointer item) { caja_menu_item_activate(CAJA_MENU_ITEM(item)); }
    static void freeColumns(GList* columns) { g_list_free_full(columns, g_object_unref); }
    static GList* pages(GList* files) {
        return caja_property_page_provider_get_pages(
            provider<CajaPropertyPageProvider>(manager, CAJA_TYPE_PROPERTY_PAGE_PROVIDER), files);
    }
};

struct Nemo : PropertyPageObject {
    static constexpr FileManager manager = FileManager::nemo;
    static constexpr const char* module = VESKOR_NEMO_MODULE;
    static GList* columns() {
        return nemo_column_provider_get_columns(
            provider<NemoColumnProvider>(manager, NEMO_TYPE_COLUMN_PROVIDER));
    }
    static bool update(StandInFile* file, GClosure* complete) {
        NemoOperationHandle* handle = nullptr;
        return nemo_info_provider_update_file_info(
                   provider<NemoInfoProvider>(manager, NEMO_TYPE_INFO_PROVIDER),
                   reinterpret_cast<NemoFileInfo*>(file), complete,
                   &handle) == NEMO_OPERATION_IN_PROGRESS;
    }
    static NemoMenuProvider* menus() {
        return provider<NemoMenuProvider>(manager, NEMO_TYPE_MENU_PROVIDER);
    }
    static GList* fileItems(GtkWidget* window, GList* files) {
        return nemo_menu_provider_get_file_items(menus(), window, files);
    }
    static GList* folderItems(GtkWidget* window, StandInFile* folder) {
        return nemo_menu_provider_get_background_items(menus(), window,
                                                       reinterpret_cast<NemoFileInfo*>(folder));
    }
    static void activate(gpointer item) { nemo_menu_item_activate(NEMO_MENU_ITEM(item)); }
    // Nemo keeps its columns for the process's life: the library's finalizer frees the
    // object a second time.
    static void freeColumns(GList* columns) { g_list_free(columns); }
    static GList* pages(GList* files) {
        return nemo_property_page_provider_get_pages(
            provider<NemoPropertyPageProvider>(manager, NEMO_TYPE_PROPERTY_PAGE_PROVIDER), files);
    }
};

struct Thunar {
    static constexpr FileManager manager = FileManager::thunar;
    static constexpr const char* module = VESKOR_THUNAR_MODULE;
    static ThunarxMenuProvider* menus() {
        return provider<ThunarxMenuProvider>(manager, THUNARX_TYPE_MENU_PROVIDER);
    }
    static GList* fileItems(GtkWidget* window, GList* files) {
        return thunarx_menu_provider_get_file_menu_items(menus(), window, files);
    }
    static GList* folderItems(GtkWidget* window, StandInFile* folder) {
        return thunarx_menu_provider_get_folder_menu_items(menus(), window,
                                                           THUNARX_FILE_INFO(folder));
    }
    static void activate(gpointer item) { thunarx_menu_item_activate(THUNARX_MENU_ITEM(item)); }
    static GList* pages(GList* files) {
        GList* pages = thunarx_property_page_provider_get_pages(
            provider<ThunarxPropertyPageProvider>(manager, THUNARX_TYPE_PROPERTY_PAGE_PROVIDER),
            files);
        g_list_foreach(
            pages, [](gpointer page, gpointer) { g_object_ref_sink(page); }, nullptr);
        return pages;
    }
    static std::string title(gpointer page) {
        return thunarx_property_page_get_label(THUNARX_PROPERTY_PAGE(page));
    }
    static GtkWidget* body(gpointer page) { return gtk_bin_get_child(GTK_BIN(page)); }
    static void freePages(GList* pages) {
        g_list_foreach(
            pages, [](gpointer page, gpointer) { gtk_widget_destroy(GTK_WIDGET(page)); }, nullptr);
        g_list_free_full(pages, g_object_unref);
    }
};

// The label or button of the page named so, or nullptr.
GtkWidget* child(GtkWidget* page, const char* name) {
    GList* children = gtk_container_get_children(GTK_CONTAINER(page));
    GtkWidget* found = nullptr;
    for (GList* it = children; it && !found; it = it->next) {
        if (g_str_equal(gtk_widget_get_name(GTK_WIDGET(it->data)), name))
            found = GTK_WIDGET(it->data);
    }
    g_list_free(children);
    return found;
}

std::string labelText(GtkWidget* page, const char* name) {
    GtkWidget* label = child(page, name);
    return label ? gtk_label_get_text(GTK_LABEL(label)) : "(no such label)";
}

// ---------------------------------------------------------------- every file manager
template <typename Manager>
class EveryModuleTest : public ModuleFixture {
protected:
    void SetUp() override { ASSERT_TRUE(loadModule(Manager::manager, Manager::module)); }
};
using EveryManager = ::testing::Types<Caja, Nemo, Thunar>;
TYPED_TEST_SUITE(EveryModuleTest, EveryManager);

TYPED_TEST(EveryModuleTest, EditDescriptionStartsTheEditorOnTheItem) {
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    StandInFile* file = newStandInFile(this->docs_.write("a file.txt", "x"));
    StandInFile* other = newStandInFile(this->docs_.write("other.txt", "x"));
    StandInFile* folder = newStandInFile(this->folder());
    GList* both = g_list_append(g_list_append(nullptr, file), other);
    EXPECT_EQ(TypeParam::fileItems(window, both), nullptr) << "one item at a time";
    const struct {
        const char* menu;
        GList* items;
        std::string path;
    } rows[] = {
        {"item", TypeParam::fileItems(window, both->next), this->docs_ / "other.txt"},
        {"background", TypeParam::folderItems(window, folder), this->folder()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.menu);
        this->expectTheEditItem(row.items, TypeParam::activate, row.path);
        g_list_free_full(row.items, g_object_unref);
    }
    g_list_free(both);
    for (StandInFile* info : {file, other, folder})
        g_object_unref(info);
    gtk_widget_destroy(window);
}

TYPED_TEST(EveryModuleTest, ThePageShowsTheWholeTextItsSourceAndOpensTheEditor) {
    const std::string path = this->docs_.write("a.txt", "x");
    this->describe(path, "First line\nsecond line");
    StandInFile* info = newStandInFile(path);
    GList* files = g_list_append(nullptr, info);
    GList* pages = TypeParam::pages(files);
    ASSERT_EQ(g_list_length(pages), 1u);
    EXPECT_EQ(TypeParam::title(pages->data), "Description");
    GtkWidget* page = TypeParam::body(pages->data);
    EXPECT_TRUE(runUntil([&] { return labelText(page, "veskor-text") != ""; }));
    EXPECT_EQ(labelText(page, "veskor-text"), "First line\nsecond line");
    EXPECT_EQ(labelText(page, "veskor-source"), this->statusOfGet(path));
    ASSERT_NE(child(page, "veskor-edit"), nullptr);
    gtk_button_clicked(GTK_BUTTON(child(page, "veskor-edit")));
    EXPECT_EQ(this->editorArguments(), path + "\n");

    // After a save the file manager reads the item again and says it changed.
    this->describe(path, "Saved again");
    emitChanged(info);
    EXPECT_TRUE(runUntil([&] { return labelText(page, "veskor-text") == "Saved again"; }))
        << labelText(page, "veskor-text");
    TypeParam::freePages(pages);
    g_list_free(files);
    g_object_unref(info);
}

// ---------------------------------------------------------------- the column
template <typename Manager>
class ColumnModuleTest : public EveryModuleTest<Manager> {
protected:
    // What the info provider gives the column for the item, after it completed; the
    // read must leave the main thread, so the provider answers "in progress".
    std::string column(StandInFile* file) {
        std::size_t completions = 0;
        GClosure* complete =
            g_cclosure_new(G_CALLBACK(+[](GObject*, gpointer, int, gpointer count) {
                               ++*static_cast<std::size_t*>(count);
                           }),
                           &completions, nullptr);
        g_closure_set_marshal(complete, g_cclosure_marshal_generic);
        g_closure_ref(complete);
        g_closure_sink(complete);
        // Answered at once only from what was read ahead, or later on the main context.
        if (Manager::update(file, complete)) {
            EXPECT_TRUE(runUntil([&] { return completions == 1; })) << "never completed";
        }
        g_closure_unref(complete);
        const auto found = file->attributes->find("veskor_description");
        return found == file->attributes->end() ? "(not set)" : found->second;
    }
    std::string column(const std::string& path) {
        StandInFile* file = newStandInFile(path);
        std::string value = column(file);
        g_object_unref(file);
        return value;
    }
};
using ColumnManager = ::testing::Types<Caja, Nemo>;
TYPED_TEST_SUITE(ColumnModuleTest, ColumnManager);

TYPED_TEST(ColumnModuleTest, ColumnShowsTheFirstLineThatGetPrints) {
    GList* list = TypeParam::columns();
    this->expectTheDescriptionColumn(list);
    TypeParam::freeColumns(list);
    this->expectTheColumnShowsWhatGetPrints(
        [&](const std::string& path) { return this->column(path); });
    const std::string gone = this->docs_.write("gone.txt", "x");
    this->describe(gone, "Soon gone");
    StandInFile* file = newStandInFile(gone);
    ASSERT_EQ(::unlink(gone.c_str()), 0);
    EXPECT_EQ(this->column(file), "") << "listed, then gone before it was read";
    g_object_unref(file);
}

// A save that changes only the folder's index leaves the item itself untouched: the
// module tells the file manager that the item is stale.
TYPED_TEST(ColumnModuleTest, TheFoldersIndexMakesItsItemsStale) {
    StandInFile* file = newStandInFile(this->docs_.write("indexed.txt", "x"));
    ASSERT_EQ(this->column(file), "");
    this->docs_.write("00_index.txt", "indexed.txt  Indexed now\r\n");
    EXPECT_TRUE(runUntil([&] { return file->invalidations > 0; }));
    EXPECT_EQ(this->column(file), "Indexed now");
    g_object_unref(file);
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!gtk_init_check(&argc, &argv)) {
        std::cerr << "no X display: run under xvfb-run\n";
        return 1;
    }
    return RUN_ALL_TESTS();
}
