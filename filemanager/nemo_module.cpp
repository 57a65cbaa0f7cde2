// Nemo (libcaja-extension): the Description column, "Edit description" on the item and
// background menus, and a Description page in Properties. Every read runs on a worker;
// Nemo is told of stale items after a shared store changed.
#include <gtk/gtk.h>
extern "C" {
#include <libnemo-extension/nemo-column-provider.h>
#include <libnemo-extension/nemo-extension-types.h>
#include <libnemo-extension/nemo-info-provider.h>
#include <libnemo-extension/nemo-menu-provider.h>
#include <libnemo-extension/nemo-property-page-provider.h>
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
GFile* localLocation(NemoFileInfo* file) {
    GFile* location = nemo_file_info_get_location(file);
    if (location && !g_file_is_native(location))
        g_clear_object(&location);
    return location;
}

// ---------------------------------------------------------------- column
GList* getColumns(NemoColumnProvider*) {
    return g_list_append(nullptr, nemo_column_new(kAttribute, kAttribute, "Description",
                                                  "The first line of the description"));
}

// ---------------------------------------------------------------- info
struct Operation {
    std::atomic<bool> cancelled = false;
    GClosure* complete;
    NemoInfoProvider* provider;
    NemoFileInfo* file;

    Operation(GClosure* closure, NemoInfoProvider* owner, NemoFileInfo* item)
        : complete(g_closure_ref(closure)),
          provider(owner),
          file(static_cast<NemoFileInfo*>(g_object_ref(item))) {}
    ~Operation() {
        g_closure_unref(complete);
        g_object_unref(file);
    }
};

NemoOperationResult updateFileInfo(NemoInfoProvider* provider, NemoFileInfo* file,
                                   GClosure* complete, NemoOperationHandle** handle) {
    GFile* location = localLocation(file);
    if (!location)
        return NEMO_OPERATION_COMPLETE;
    if (g_watch)
        g_watch->asked(pathOf(location));
    auto* operation = new Operation(complete, provider, file);
    *handle = reinterpret_cast<NemoOperationHandle*>(operation);
    readDescriptionAsync(pathOf(location), &operation->cancelled,
                         [operation](const ItemDescription& item, bool cancelled) {
                             if (!cancelled) {
                                 nemo_file_info_add_string_attribute(operation->file, kAttribute,
                                                                     columnText(item).c_str());
                                 nemo_info_provider_update_complete_invoke(
                                     operation->complete, operation->provider,
                                     reinterpret_cast<NemoOperationHandle*>(operation),
                                     NEMO_OPERATION_COMPLETE);
                             }
                             delete operation;
                         });
    g_object_unref(location);
    return NEMO_OPERATION_IN_PROGRESS;
}

// The answer is dropped when it comes: Nemo no longer waits for it.
void cancelUpdate(NemoInfoProvider*, NemoOperationHandle* handle) {
    reinterpret_cast<Operation*>(handle)->cancelled = true;
}

// ---------------------------------------------------------------- menus
void editActivated(NemoMenuItem* item, gpointer) {
    startEditor(pathOf(G_FILE(g_object_get_data(G_OBJECT(item), kLocationKey))));
}

GList* editItemFor(NemoFileInfo* file) {
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    NemoMenuItem* item =
        nemo_menu_item_new("VeskorNemoProvider::edit_description", "Edit description",
                           "Edit the description of this item", nullptr);
    g_object_set_data_full(G_OBJECT(item), kLocationKey, location, g_object_unref);
    g_signal_connect(item, "activate", G_CALLBACK(editActivated), nullptr);
    return g_list_append(nullptr, item);
}

GList* getFileItems(NemoMenuProvider*, GtkWidget*, GList* files) {
    return files && !files->next ? editItemFor(static_cast<NemoFileInfo*>(files->data)) : nullptr;
}

GList* getBackgroundItems(NemoMenuProvider*, GtkWidget*, NemoFileInfo* folder) {
    return editItemFor(folder);
}

// ---------------------------------------------------------------- properties
// Read again whenever Nemo sees the item change, a save included.
void itemChanged(NemoFileInfo*, gpointer page) {
    refreshDescriptionPage(GTK_WIDGET(page));
}

GList* getPages(NemoPropertyPageProvider*, GList* files) {
    if (!files || files->next)
        return nullptr;
    auto* file = static_cast<NemoFileInfo*>(files->data);
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    GtkWidget* page = newDescriptionPage(location);
    g_object_unref(location);
    if (g_signal_lookup("changed", G_OBJECT_TYPE(file)))
        g_signal_connect_object(file, "changed", G_CALLBACK(itemChanged), page, GConnectFlags(0));
    return g_list_append(nullptr, nemo_property_page_new("VeskorNemoProvider::description",
                                                         gtk_label_new("Description"), page));
}

// ---------------------------------------------------------------- the type
void initColumns(gpointer iface, gpointer) {
    static_cast<NemoColumnProviderIface*>(iface)->get_columns = getColumns;
}

void initInfo(gpointer iface, gpointer) {
    auto* info = static_cast<NemoInfoProviderIface*>(iface);
    info->update_file_info = updateFileInfo;
    info->cancel_update = cancelUpdate;
}

void initMenus(gpointer iface, gpointer) {
    auto* menus = static_cast<NemoMenuProviderIface*>(iface);
    menus->get_file_items = getFileItems;
    menus->get_background_items = getBackgroundItems;
}

void initPages(gpointer iface, gpointer) {
    static_cast<NemoPropertyPageProviderIface*>(iface)->get_pages = getPages;
}

void registerProvider(GTypeModule* module) {
    static const GTypeInfo info = {
        sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
        sizeof(GObject),      0,       nullptr, nullptr};
    g_providerType = g_type_module_register_type(module, G_TYPE_OBJECT, "VeskorNemoProvider", &info,
                                                 GTypeFlags(0));
    const std::pair<GType, GInterfaceInitFunc> interfaces[] = {
        {NEMO_TYPE_COLUMN_PROVIDER, initColumns},
        {NEMO_TYPE_INFO_PROVIDER, initInfo},
        {NEMO_TYPE_MENU_PROVIDER, initMenus},
        {NEMO_TYPE_PROPERTY_PAGE_PROVIDER, initPages},
    };
    for (const auto& [type, init] : interfaces) {
        const GInterfaceInfo implementation = {init, nullptr, nullptr};
        g_type_module_add_interface(module, g_providerType, type, &implementation);
    }
}

// Nemo asks the providers about an item again once its information is invalidated.
void invalidate(GFile* item) {
    if (NemoFileInfo* file = nemo_file_info_lookup(item)) {
        nemo_file_info_invalidate_extension_info(file);
        g_object_unref(file);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void nemo_module_initialize(GTypeModule* module) {
    registerProvider(module);
    g_watch = std::make_unique<DescriptionWatch>(invalidate);
}

__attribute__((visibility("default"))) void nemo_module_shutdown() {
    g_watch.reset();
}

__attribute__((visibility("default"))) void nemo_module_list_types(const GType** types,
                                                                   int* count) {
    *types = &g_providerType;
    *count = 1;
}
}
