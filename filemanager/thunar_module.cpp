// Thunar (thunarx-3): "Edit description" on the item and folder menus and a Description
// page in Properties. Thunar has no extension columns. The page is read on a worker.
#include <gtk/gtk.h>
extern "C" {
#include <thunarx/thunarx.h>
}

#include "filemanager/description_page.h"
#include "filemanager/glib_adapter.h"

namespace {

constexpr char kLocationKey[] = "veskor-location";

GType g_providerType = 0;

// A local item's location, or nullptr (a new reference).
GFile* localLocation(ThunarxFileInfo* file) {
    GFile* location = thunarx_file_info_get_location(file);
    if (location && !g_file_is_native(location))
        g_clear_object(&location);
    return location;
}

// ---------------------------------------------------------------- menus
void editActivated(ThunarxMenuItem* item, gpointer) {
    startEditor(pathOf(G_FILE(g_object_get_data(G_OBJECT(item), kLocationKey))));
}

GList* editItemFor(ThunarxFileInfo* file) {
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    ThunarxMenuItem* item =
        thunarx_menu_item_new("VeskorThunarProvider::edit_description", "Edit description",
                              "Edit the description of this item", nullptr);
    g_object_set_data_full(G_OBJECT(item), kLocationKey, location, g_object_unref);
    g_signal_connect(item, "activate", G_CALLBACK(editActivated), nullptr);
    return g_list_append(nullptr, item);
}

GList* getFileMenuItems(ThunarxMenuProvider*, GtkWidget*, GList* files) {
    return files && !files->next ? editItemFor(THUNARX_FILE_INFO(files->data)) : nullptr;
}

GList* getFolderMenuItems(ThunarxMenuProvider*, GtkWidget*, ThunarxFileInfo* folder) {
    return editItemFor(folder);
}

// ---------------------------------------------------------------- properties
// Read again whenever Thunar sees the item change, a save included.
void itemChanged(ThunarxFileInfo*, gpointer page) {
    refreshDescriptionPage(GTK_WIDGET(page));
}

GList* getPages(ThunarxPropertyPageProvider*, GList* files) {
    if (!files || files->next)
        return nullptr;
    auto* file = THUNARX_FILE_INFO(files->data);
    GFile* location = localLocation(file);
    if (!location)
        return nullptr;
    GtkWidget* page = newDescriptionPage(location);
    g_object_unref(location);
    g_signal_connect_object(file, "changed", G_CALLBACK(itemChanged), page, GConnectFlags(0));
    GtkWidget* frame = thunarx_property_page_new("Description");
    gtk_container_add(GTK_CONTAINER(frame), page);
    gtk_widget_show(frame);
    return g_list_append(nullptr, frame);
}

// ---------------------------------------------------------------- the type
void initMenus(gpointer iface, gpointer) {
    auto* menus = static_cast<ThunarxMenuProviderIface*>(iface);
    menus->get_file_menu_items = getFileMenuItems;
    menus->get_folder_menu_items = getFolderMenuItems;
}

void initPages(gpointer iface, gpointer) {
    static_cast<ThunarxPropertyPageProviderIface*>(iface)->get_pages = getPages;
}

void registerProvider(ThunarxProviderPlugin* plugin) {
    static const GTypeInfo info = {
        sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
        sizeof(GObject),      0,       nullptr, nullptr};
    g_providerType = thunarx_provider_plugin_register_type(
        plugin, G_TYPE_OBJECT, "VeskorThunarProvider", &info, GTypeFlags(0));
    const std::pair<GType, GInterfaceInitFunc> interfaces[] = {
        {THUNARX_TYPE_MENU_PROVIDER, initMenus},
        {THUNARX_TYPE_PROPERTY_PAGE_PROVIDER, initPages},
    };
    for (const auto& [type, init] : interfaces) {
        const GInterfaceInfo implementation = {init, nullptr, nullptr};
        thunarx_provider_plugin_add_interface(plugin, g_providerType, type, &implementation);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void thunar_extension_initialize(
    ThunarxProviderPlugin* plugin) {
    if (const char* mismatch = thunarx_check_version(THUNARX_MAJOR_VERSION, THUNARX_MINOR_VERSION,
                                                     THUNARX_MICRO_VERSION)) {
        g_warning("Version mismatch: %s", mismatch);
        return;
    }
    // The reading thread lives as long as the process: the module must never be unloaded.
    thunarx_provider_plugin_set_resident(plugin, TRUE);
    registerProvider(plugin);
}

__attribute__((visibility("default"))) void thunar_extension_shutdown() {}

__attribute__((visibility("default"))) void thunar_extension_list_types(const GType** types,
                                                                        gint* count) {
    *types = &g_providerType;
    *count = g_providerType ? 1 : 0;
}
}
