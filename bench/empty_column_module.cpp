// A GNOME Files module whose info provider answers every item at once with an empty
// column and does nothing else: the column bench runs its driver with it to tell the
// driver's own work (the file objects, the folder's listing, the requests) from the
// work that Veskor's module adds.
#include <gio/gio.h>
extern "C" {
#include <nautilus-extension.h>
}

namespace {

GType g_type = 0;

NautilusOperationResult answerAtOnce(NautilusInfoProvider*, NautilusFileInfo* file, GClosure*,
                                     NautilusOperationHandle**) {
    nautilus_file_info_add_string_attribute(file, "veskor_description", "");
    return NAUTILUS_OPERATION_COMPLETE;
}

void initInfo(gpointer iface, gpointer) {
    static_cast<NautilusInfoProviderInterface*>(iface)->update_file_info = answerAtOnce;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void nautilus_module_initialize(GTypeModule* module) {
    static const GTypeInfo info = {
        sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
        sizeof(GObject),      0,       nullptr, nullptr};
    g_type = g_type_module_register_type(module, G_TYPE_OBJECT, "EmptyColumnProvider", &info,
                                         GTypeFlags(0));
    const GInterfaceInfo infoProvider = {initInfo, nullptr, nullptr};
    g_type_module_add_interface(module, g_type, NAUTILUS_TYPE_INFO_PROVIDER, &infoProvider);
}

__attribute__((visibility("default"))) void nautilus_module_shutdown() {}

__attribute__((visibility("default"))) void nautilus_module_list_types(const GType** types,
                                                                       int* count) {
    *types = &g_type;
    *count = 1;
}
}
