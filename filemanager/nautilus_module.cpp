// GNOME Files (libnautilus-extension-4): the Description column, "Edit description" on
// the item and background menus, and a Description section in Properties. Every read
// runs on a worker; GNOME Files is told of stale items after a shared store changed.
#include <gio/gio.h>
// The header declares the module's entry points without C linkage.
extern "C" {
#include <nautilus-extension.h>
}

#include <optional>
#include <utility>

#include "filemanager/description_watch.h"
#include "filemanager/glib_adapter.h"

namespace {

constexpr char kAttribute[] = "veskor_description";
constexpr char kPathKey[] = "veskor-path";

GType g_providerType = 0;
// Never destroyed at exit: the file manager is ending, and its folders with it.
DescriptionWatch* g_watch = nullptr;

// A local item's path; "" for any other.
std::string localPath(NautilusFileInfo* file) {
    GFile* location = nautilus_file_info_get_location(file);
    std::string path = location ? pathOf(location) : "";
    g_clear_object(&location);
    return path;
}

// ---------------------------------------------------------------- column
GList* getColumns(NautilusColumnProvider*) {
    return g_list_append(nullptr, nautilus_column_new(kAttribute, kAttribute, "Description",
                                                      "The first line of the description"));
}

// ---------------------------------------------------------------- info
struct Operation {
    std::atomic<bool> cancelled = false;
    GClosure* complete;
    NautilusInfoProvider* provider;
    NautilusFileInfo* file;

    Operation(GClosure* closure, NautilusInfoProvider* owner, NautilusFileInfo* item)
        : complete(g_closure_ref(closure)),
          provider(owner),
          file(NAUTILUS_FILE_INFO(g_object_ref(item))) {}
    ~Operation() {
        g_closure_unref(complete);
        g_object_unref(file);
    }
};

NautilusOperationResult updateFileInfo(NautilusInfoProvider* provider, NautilusFileInfo* file,
                                       GClosure* complete, NautilusOperationHandle** handle) {
    std::string path = localPath(file);
    if (path.empty())
        return NAUTILUS_OPERATION_COMPLETE;
    if (g_watch)
        g_watch->asked(path);
    // GNOME Files asks about one item of a folder at a time and waits for each answer:
    // those read ahead are answered at once.
    if (std::optional<std::string> text = columnCache().take(path)) {
        nautilus_file_info_add_string_attribute(file, kAttribute, text->c_str());
        return NAUTILUS_OPERATION_COMPLETE;
    }
    if (g_watch)
        g_watch->missed();
    auto* operation = new Operation(complete, provider, file);
    *handle = reinterpret_cast<NautilusOperationHandle*>(operation);
    readDescriptionAsync(std::move(path), &operation->cancelled,
                         [operation](const ItemDescription& item, bool cancelled) {
                             if (!cancelled) {
                                 nautilus_file_info_add_string_attribute(
                                     operation->file, kAttribute, columnText(item).c_str());
                                 nautilus_info_provider_update_complete_invoke(
                                     operation->complete, operation->provider,
                                     reinterpret_cast<NautilusOperationHandle*>(operation),
                                     NAUTILUS_OPERATION_COMPLETE);
                             }
                             delete operation;
                         });
    return NAUTILUS_OPERATION_IN_PROGRESS;
}

// The answer is dropped when it comes: GNOME Files no longer waits for it.
void cancelUpdate(NautilusInfoProvider*, NautilusOperationHandle* handle) {
    reinterpret_cast<Operation*>(handle)->cancelled = true;
}

// ---------------------------------------------------------------- menus
void editActivated(NautilusMenuItem* item, gpointer) {
    startEditor(static_cast<const char*>(g_object_get_data(G_OBJECT(item), kPathKey)));
}

GList* editItemFor(NautilusFileInfo* file) {
    const std::string path = localPath(file);
    if (path.empty())
        return nullptr;
    NautilusMenuItem* item =
        nautilus_menu_item_new("VeskorNautilusProvider::edit_description", "Edit description",
                               "Edit the description of this item", nullptr);
    g_object_set_data_full(G_OBJECT(item), kPathKey, g_strdup(path.c_str()), g_free);
    g_signal_connect(item, "activate", G_CALLBACK(editActivated), nullptr);
    return g_list_append(nullptr, item);
}

GList* getFileItems(NautilusMenuProvider*, GList* files) {
    return files && !files->next ? editItemFor(NAUTILUS_FILE_INFO(files->data)) : nullptr;
}

GList* getBackgroundItems(NautilusMenuProvider*, NautilusFileInfo* folder) {
    return editItemFor(folder);
}

// ---------------------------------------------------------------- properties
void fillSection(GListStore* section, NautilusFileInfo* file) {
    std::string path = localPath(file);
    if (path.empty())
        return;
    g_object_ref(section);
    readDescriptionAsync(std::move(path), nullptr, [section](const ItemDescription& item, bool) {
        g_list_store_remove_all(section);
        auto add = [section](const char* name, const std::string& value) {
            NautilusPropertiesItem* row = nautilus_properties_item_new(name, value.c_str());
            g_list_store_append(section, row);
            g_object_unref(row);
        };
        add("Description", item.text.empty() ? "None" : displayText(item.text));
        if (!item.status.empty())
            add("Source", displayText(item.status));
        g_object_unref(section);
    });
}

// Read again whenever GNOME Files sees the item change, a save included.
void itemChanged(NautilusFileInfo* file, gpointer section) {
    fillSection(G_LIST_STORE(section), file);
}

GList* getModels(NautilusPropertiesModelProvider*, GList* files) {
    if (!files || files->next)
        return nullptr;
    auto* file = NAUTILUS_FILE_INFO(files->data);
    GListStore* section = g_list_store_new(NAUTILUS_TYPE_PROPERTIES_ITEM);
    fillSection(section, file);
    if (g_signal_lookup("changed", G_OBJECT_TYPE(file)))
        g_signal_connect_object(file, "changed", G_CALLBACK(itemChanged), section,
                                GConnectFlags(0));
    NautilusPropertiesModel* model =
        nautilus_properties_model_new("Description", G_LIST_MODEL(section));
    g_object_unref(section);
    return g_list_append(nullptr, model);
}

// ---------------------------------------------------------------- the type
void initColumns(gpointer iface, gpointer) {
    static_cast<NautilusColumnProviderInterface*>(iface)->get_columns = getColumns;
}

void initInfo(gpointer iface, gpointer) {
    auto* info = static_cast<NautilusInfoProviderInterface*>(iface);
    info->update_file_info = updateFileInfo;
    info->cancel_update = cancelUpdate;
}

void initMenus(gpointer iface, gpointer) {
    auto* menus = static_cast<NautilusMenuProviderInterface*>(iface);
    menus->get_file_items = getFileItems;
    menus->get_background_items = getBackgroundItems;
}

void initProperties(gpointer iface, gpointer) {
    static_cast<NautilusPropertiesModelProviderInterface*>(iface)->get_models = getModels;
}

void registerProvider(GTypeModule* module) {
    static const GTypeInfo info = {
        sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
        sizeof(GObject),      0,       nullptr, nullptr};
    g_providerType = g_type_module_register_type(module, G_TYPE_OBJECT, "VeskorNautilusProvider",
                                                 &info, GTypeFlags(0));
    const std::pair<GType, GInterfaceInitFunc> interfaces[] = {
        {NAUTILUS_TYPE_COLUMN_PROVIDER, initColumns},
        {NAUTILUS_TYPE_INFO_PROVIDER, initInfo},
        {NAUTILUS_TYPE_MENU_PROVIDER, initMenus},
        {NAUTILUS_TYPE_PROPERTIES_MODEL_PROVIDER, initProperties},
    };
    for (const auto& [type, init] : interfaces) {
        const GInterfaceInfo implementation = {init, nullptr, nullptr};
        g_type_module_add_interface(module, g_providerType, type, &implementation);
    }
}

// GNOME Files re-asks the providers about an item once its information is invalidated.
void invalidate(GFile* item) {
    if (NautilusFileInfo* file = nautilus_file_info_lookup(item)) {
        nautilus_file_info_invalidate_extension_info(file);
        g_object_unref(file);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void nautilus_module_initialize(GTypeModule* module) {
    registerProvider(module);
    startReading();
    g_watch = new DescriptionWatch(invalidate);
}

__attribute__((visibility("default"))) void nautilus_module_shutdown() {
    delete std::exchange(g_watch, nullptr);
}

__attribute__((visibility("default"))) void nautilus_module_list_types(const GType** types,
                                                                       int* count) {
    *types = &g_providerType;
    *count = 1;
}
}
