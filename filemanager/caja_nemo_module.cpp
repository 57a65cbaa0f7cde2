// Caja and Nemo (libcaja-extension, libnemo-extension): the Description column, "Edit
// description" on the item and background menus, and a Description page in Properties.
// Every read runs on a worker; the file manager is told of stale items after a shared
// store changed. The two libraries offer the same interfaces under their own prefixes,
// so this one file is built twice, with VESKOR_FOR_CAJA or VESKOR_FOR_NEMO defined.
#include <gtk/gtk.h>
extern "C" {
#if defined(VESKOR_FOR_CAJA)
#include <libcaja-extension/caja-column-provider.h>
#include <libcaja-extension/caja-extension-types.h>
#include <libcaja-extension/caja-info-provider.h>
#include <libcaja-extension/caja-menu-provider.h>
#include <libcaja-extension/caja-property-page-provider.h>
#define FM_FN(name) caja_##name
#define FM_T(name) Caja##name
#define FM_K(name) CAJA_##name
#define FM_PROVIDER "VeskorCajaProvider"
#elif defined(VESKOR_FOR_NEMO)
#include <libnemo-extension/nemo-column-provider.h>
#include <libnemo-extension/nemo-extension-types.h>
#include <libnemo-extension/nemo-info-provider.h>
#include <libnemo-extension/nemo-menu-provider.h>
#include <libnemo-extension/nemo-property-page-provider.h>
#define FM_FN(name) nemo_##name
#define FM_T(name) Nemo##name
#define FM_K(name) NEMO_##name
#define FM_PROVIDER "VeskorNemoProvider"
#else
#error "define VESKOR_FOR_CAJA or VESKOR_FOR_NEMO"
#endif
}

#include <atomic>
#include <optional>
#include <utility>

#include "filemanager/description_page.h"
#include "filemanager/description_watch.h"
#include "filemanager/glib_adapter.h"

namespace {

constexpr char kAttribute[] = "veskor_description";
constexpr char kLocationKey[] = "veskor-location";

GType g_providerType = 0;
// Never destroyed at exit: the file manager is ending, and its folders with it.
DescriptionWatch* g_watch = nullptr;

// A local item's location, or nullptr (a new reference).
GFile* localLocation(FM_T(FileInfo) * file) {
    GFile* location = FM_FN(file_info_get_location)(file);
    if (location && !g_file_is_native(location))
        g_clear_object(&location);
    return location;
}

// ---------------------------------------------------------------- column
GList* getColumns(FM_T(ColumnProvider) *) {
    return g_list_append(nullptr, FM_FN(column_new)(kAttribute, kAttribute, "Description",
                                                    "The first line of the description"));
}

// ---------------------------------------------------------------- info
struct Operation {
    std::atomic<bool> cancelled = false;
    GClosure* complete;
    FM_T(InfoProvider) * provider;
    FM_T(FileInfo) * file;

    Operation(GClosure* closure, FM_T(InfoProvider) * owner, FM_T(FileInfo) * item)
        : complete(g_closure_ref(closure)),
          provider(owner),
          file(static_cast<FM_T(FileInfo) *>(g_object_ref(item))) {}
    ~Operation() {
        g_closure_unref(complete);
        g_object_unref(file);
    }
};

FM_T(OperationResult)
updateFileInfo(FM_T(InfoProvider) * provider, FM_T(FileInfo) * file, GClosure* complete,
               FM_T(OperationHandle) * *handle) {
    GFile* location = localLocation(file);
    if (!location)
        return FM_K(OPERATION_COMPLETE);
    const std::string path = pathOf(location);
    g_object_unref(location);
    if (g_watch)
        g_watch->asked(path);
    // The file manager asks about one item of a folder at a time and waits for each
    // answer: those read ahead are answered at once.
    if (std::optional<std::string> text = columnCache().take(path)) {
        FM_FN(file_info_add_string_attribute)(file, kAttribute, text->c_str());
        return FM_K(OPERATION_COMPLETE);
    }
    if (g_watch)
        g_watch->missed();
    auto* operation = new Operation(complete, provider, file);
    *handle = reinterpret_cast<FM_T(OperationHandle)*>(operation);
    readDescriptionAsync(
        path, &operation->cancelled, [operation](const ItemDescription& item, bool cancelled) {
            if (!cancelled) {
                FM_FN(file_info_add_string_attribute)
                (operation->file, kAttribute, columnText(item).c_str());
                FM_FN(info_provider_update_complete_invoke)
                (operation->complete, operation->provider,
                 reinterpret_cast<FM_T(OperationHandle)*>(operation), FM_K(OPERATION_COMPLETE));
            }
            delete operation;
        });
    return FM_K(OPERATION_IN_PROGRESS);
}

// The answer is dropped when it comes: the file manager no longer waits for it.
void cancelUpdate(FM_T(InfoProvider) *, FM_T(OperationHandle) * handle) {
    reinterpret_cast<Operation*>(handle)->cancelled = true;
}

// ---------------------------------------------------------------- menus
void editActivated(FM_T(MenuItem) * item, gpointer) {
    startEditor(pathOf(G_FILE(g_object_get_data(G_OBJECT(item), kLocationKey))));
}

GList* editItemFor(FM_T(FileInfo) * file) {
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    FM_T(MenuItem)* item =
        FM_FN(menu_item_new)(FM_PROVIDER "::edit_description", "Edit description",
                             "Edit the description of this item", nullptr);
    g_object_set_data_full(G_OBJECT(item), kLocationKey, location, g_object_unref);
    g_signal_connect(item, "activate", G_CALLBACK(editActivated), nullptr);
    return g_list_append(nullptr, item);
}

GList* getFileItems(FM_T(MenuProvider) *, GtkWidget*, GList* files) {
    return files && !files->next ? editItemFor(static_cast<FM_T(FileInfo)*>(files->data)) : nullptr;
}

GList* getBackgroundItems(FM_T(MenuProvider) *, GtkWidget*, FM_T(FileInfo) * folder) {
    return editItemFor(folder);
}

// ---------------------------------------------------------------- properties
// Read again whenever the file manager sees the item change, a save included.
void itemChanged(FM_T(FileInfo) *, gpointer page) {
    refreshDescriptionPage(GTK_WIDGET(page));
}

GList* getPages(FM_T(PropertyPageProvider) *, GList* files) {
    if (!files || files->next)
        return nullptr;
    auto* file = static_cast<FM_T(FileInfo)*>(files->data);
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    GtkWidget* page = newDescriptionPage(location);
    g_object_unref(location);
    if (g_signal_lookup("changed", G_OBJECT_TYPE(file)))
        g_signal_connect_object(file, "changed", G_CALLBACK(itemChanged), page, GConnectFlags(0));
    return g_list_append(nullptr, FM_FN(property_page_new)(FM_PROVIDER "::description",
                                                           gtk_label_new("Description"), page));
}

// ---------------------------------------------------------------- the type
void initColumns(gpointer iface, gpointer) {
    static_cast<FM_T(ColumnProviderIface)*>(iface)->get_columns = getColumns;
}

void initInfo(gpointer iface, gpointer) {
    auto* info = static_cast<FM_T(InfoProviderIface)*>(iface);
    info->update_file_info = updateFileInfo;
    info->cancel_update = cancelUpdate;
}

void initMenus(gpointer iface, gpointer) {
    auto* menus = static_cast<FM_T(MenuProviderIface)*>(iface);
    menus->get_file_items = getFileItems;
    menus->get_background_items = getBackgroundItems;
}

void initPages(gpointer iface, gpointer) {
    static_cast<FM_T(PropertyPageProviderIface)*>(iface)->get_pages = getPages;
}

void registerProvider(GTypeModule* module) {
    static const GTypeInfo info = {
        sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
        sizeof(GObject),      0,       nullptr, nullptr};
    g_providerType =
        g_type_module_register_type(module, G_TYPE_OBJECT, FM_PROVIDER, &info, GTypeFlags(0));
    const std::pair<GType, GInterfaceInitFunc> interfaces[] = {
        {FM_K(TYPE_COLUMN_PROVIDER), initColumns},
        {FM_K(TYPE_INFO_PROVIDER), initInfo},
        {FM_K(TYPE_MENU_PROVIDER), initMenus},
        {FM_K(TYPE_PROPERTY_PAGE_PROVIDER), initPages},
    };
    for (const auto& [type, init] : interfaces) {
        const GInterfaceInfo implementation = {init, nullptr, nullptr};
        g_type_module_add_interface(module, g_providerType, type, &implementation);
    }
}

// The file manager asks the providers about an item again once its information is
// invalidated.
void invalidate(GFile* item) {
    if (FM_T(FileInfo)* file = FM_FN(file_info_lookup)(item)) {
        FM_FN(file_info_invalidate_extension_info)(file);
        g_object_unref(file);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void FM_FN(module_initialize)(GTypeModule* module) {
    registerProvider(module);
    g_watch = new DescriptionWatch(invalidate);
}

__attribute__((visibility("default"))) void FM_FN(module_shutdown)() {
    delete std::exchange(g_watch, nullptr);
}

__attribute__((visibility("default"))) void FM_FN(module_list_types)(const GType** types,
                                                                     int* count) {
    *types = &g_providerType;
    *count = 1;
}
}
