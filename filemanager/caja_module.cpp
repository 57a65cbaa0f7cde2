// Caja (libcaja-extension): the Description column, "Edit description" on the item and
// background menus, and a Description page in Properties. Every read runs on a worker;
// Caja is told of stale items after a shared store changed.
#include <gtk/gtk.h>
extern "C" {
#include <libcaja-extension/caja-column-provider.h>
#include <libcaja-extension/caja-extension-types.h>
#include <libcaja-extension/caja-info-provider.h>
#include <libcaja-extension/caja-menu-provider.h>
#include <libcaja-extension/caja-property-page-provider.h>
}

#include <atomic>
#include <memory>

#include "filemanager/description_page.h"
#include "filemanager/description_watch.h"
#include "filemanager/glib_adapter.h"

namespace {

constexpr char kAttribute[] = "veskor_description";
constexpr char kLocationKey[] = "veskor-location";

GType g_providerType = 0;
std::unique_ptr<DescriptionWatch> g_watch;

// A local item's location, or nullptr (a new reference).
GFile* localLocation(CajaFileInfo* file) {
    GFile* location = caja_file_info_get_location(file);
    if (location && !g_file_is_native(location))
        g_clear_object(&location);
    return location;
}

// ---------------------------------------------------------------- column
GList* getColumns(CajaColumnProvider*) {
    return g_list_append(nullptr, caja_column_new(kAttribute, kAttribute, "Description",
                                                  "The first line of the description"));
}

// ---------------------------------------------------------------- info
struct Operation {
    std::atomic<bool> cancelled = false;
    GClosure* complete;
    CajaInfoProvider* provider;
    CajaFileInfo* file;

    Operation(GClosure* closure, CajaInfoProvider* owner, CajaFileInfo* item)
        : complete(g_closure_ref(closure)),
          provider(owner),
          file(static_cast<CajaFileInfo*>(g_object_ref(item))) {}
    ~Operation() {
        g_closure_unref(complete);
        g_object_unref(file);
    }
};

CajaOperationResult updateFileInfo(CajaInfoProvider* provider, CajaFileInfo* file,
                                   GClosure* complete, CajaOperationHandle** handle) {
    GFile* location = localLocation(file);
    if (!location)
        return CAJA_OPERATION_COMPLETE;
    if (g_watch)
        g_watch->asked(pathOf(location));
    auto* operation = new Operation(complete, provider, file);
    *handle = reinterpret_cast<CajaOperationHandle*>(operation);
    readDescriptionAsync(pathOf(location), &operation->cancelled,
                         [operation](const ItemDescription& item, bool cancelled) {
                             if (!cancelled) {
                                 caja_file_info_add_string_attribute(operation->file, kAttribute,
                                                                     columnText(item).c_str());
                                 caja_info_provider_update_complete_invoke(
                                     operation->complete, operation->provider,
                                     reinterpret_cast<CajaOperationHandle*>(operation),
                                     CAJA_OPERATION_COMPLETE);
                             }
                             delete operation;
                         });
    g_object_unref(location);
    return CAJA_OPERATION_IN_PROGRESS;
}

// The answer is dropped when it comes: Caja no longer waits for it.
void cancelUpdate(CajaInfoProvider*, CajaOperationHandle* handle) {
    reinterpret_cast<Operation*>(handle)->cancelled = true;
}

// ---------------------------------------------------------------- menus
void editActivated(CajaMenuItem* item, gpointer) {
    startEditor(pathOf(G_FILE(g_object_get_data(G_OBJECT(item), kLocationKey))));
}

GList* editItemFor(CajaFileInfo* file) {
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    CajaMenuItem* item =
        caja_menu_item_new("VeskorCajaProvider::edit_description", "Edit description",
                           "Edit the description of this item", nullptr);
    g_object_set_data_full(G_OBJECT(item), kLocationKey, location, g_object_unref);
    g_signal_connect(item, "activate", G_CALLBACK(editActivated), nullptr);
    return g_list_append(nullptr, item);
}

GList* getFileItems(CajaMenuProvider*, GtkWidget*, GList* files) {
    return files && !files->next ? editItemFor(static_cast<CajaFileInfo*>(files->data)) : nullptr;
}

GList* getBackgroundItems(CajaMenuProvider*, GtkWidget*, CajaFileInfo* folder) {
    return editItemFor(folder);
}

// ---------------------------------------------------------------- properties
// Read again whenever Caja sees the item change, a save included.
void itemChanged(CajaFileInfo*, gpointer page) {
    refreshDescriptionPage(GTK_WIDGET(page));
}

GList* getPages(CajaPropertyPageProvider*, GList* files) {
    if (!files || files->next)
        return nullptr;
    auto* file = static_cast<CajaFileInfo*>(files->data);
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    GtkWidget* page = newDescriptionPage(location);
    g_object_unref(location);
    if (g_signal_lookup("changed", G_OBJECT_TYPE(file)))
        g_signal_connect_object(file, "changed", G_CALLBACK(itemChanged), page, GConnectFlags(0));
    return g_list_append(nullptr, caja_property_page_new("VeskorCajaProvider::description",
                                                         gtk_label_new("Description"), page));
}

// ---------------------------------------------------------------- the type
void initColumns(gpointer iface, gpointer) {
    static_cast<CajaColumnProviderIface*>(iface)->get_columns = getColumns;
}

void initInfo(gpointer iface, gpointer) {
    auto* info = static_cast<CajaInfoProviderIface*>(iface);
    info->update_file_info = updateFileInfo;
    info->cancel_update = cancelUpdate;
}

void initMenus(gpointer iface, gpointer) {
    auto* menus = static_cast<CajaMenuProviderIface*>(iface);
    menus->get_file_items = getFileItems;
    menus->get_background_items = getBackgroundItems;
}

void initPages(gpointer iface, gpointer) {
    static_cast<CajaPropertyPageProviderIface*>(iface)->get_pages = getPages;
}

void registerProvider(GTypeModule* module) {
    static const GTypeInfo info = {
        sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
        sizeof(GObject),      0,       nullptr, nullptr};
    g_providerType = g_type_module_register_type(module, G_TYPE_OBJECT, "VeskorCajaProvider", &info,
                                                 GTypeFlags(0));
    const std::pair<GType, GInterfaceInitFunc> interfaces[] = {
        {CAJA_TYPE_COLUMN_PROVIDER, initColumns},
        {CAJA_TYPE_INFO_PROVIDER, initInfo},
        {CAJA_TYPE_MENU_PROVIDER, initMenus},
        {CAJA_TYPE_PROPERTY_PAGE_PROVIDER, initPages},
    };
    for (const auto& [type, init] : interfaces) {
        const GInterfaceInfo implementation = {init, nullptr, nullptr};
        g_type_module_add_interface(module, g_providerType, type, &implementation);
    }
}

// Caja asks the providers about an item again once its information is invalidated.
void invalidate(GFile* item) {
    if (CajaFileInfo* file = caja_file_info_lookup(item)) {
        caja_file_info_invalidate_extension_info(file);
        g_object_unref(file);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void caja_module_initialize(GTypeModule* module) {
    registerProvider(module);
    g_watch = std::make_unique<DescriptionWatch>(invalidate);
}

__attribute__((visibility("default"))) void caja_module_shutdown() {
    g_watch.reset();
}

__attribute__((visibility("default"))) void caja_module_list_types(const GType** types,
                                                                   int* count) {
    *types = &g_providerType;
    *count = 1;
}
}
