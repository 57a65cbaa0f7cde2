#include "filemanager/gtk3_module_host.h"

#include <gmodule.h>
#include <gtk/gtk.h>
extern "C" {
#include <thunarx/thunarx.h>
}

#include <iostream>
#include <map>
#include <vector>

namespace {

// The module being loaded; a host module loads one.
struct HostModule {
    GTypeModule parent;
    FileManager manager;
    const char* path;
};

std::map<FileManager, std::vector<GObject*>> g_providers;

const char* prefixOf(FileManager manager) {
    switch (manager) {
        case FileManager::caja:
            return "caja_module";
        case FileManager::nemo:
            return "nemo_module";
        case FileManager::thunar:
            return "thunar_extension";
    }
    return "";
}

gboolean loadTypes(GTypeModule* typeModule) {
    auto* host = reinterpret_cast<HostModule*>(typeModule);
    const std::string prefix = prefixOf(host->manager);
    GModule* library = g_module_open(host->path, G_MODULE_BIND_LAZY);
    gpointer initialize = nullptr, listTypes = nullptr;
    if (!library || !g_module_symbol(library, (prefix + "_initialize").c_str(), &initialize) ||
        !g_module_symbol(library, (prefix + "_list_types").c_str(), &listTypes)) {
        std::cerr << g_module_error() << '\n';
        return FALSE;
    }
    // Caja and Nemo hand over the type module, Thunar its provider plugin: the same object.
    reinterpret_cast<void (*)(gpointer)>(initialize)(typeModule);
    const GType* types = nullptr;
    int count = 0;
    reinterpret_cast<void (*)(const GType**, int*)>(listTypes)(&types, &count);
    for (int i = 0; i < count; ++i)
        g_providers[host->manager].push_back(G_OBJECT(g_object_new(types[i], nullptr)));
    return TRUE;
}

// What Thunar's module object offers its plugins.
void initPlugin(gpointer iface, gpointer) {
    auto* plugin = static_cast<ThunarxProviderPluginIface*>(iface);
    plugin->get_resident = [](const ThunarxProviderPlugin*) -> gboolean { return TRUE; };
    plugin->set_resident = [](ThunarxProviderPlugin*, gboolean) {};
    plugin->register_type = [](ThunarxProviderPlugin* self, GType parent, const gchar* name,
                               const GTypeInfo* info, GTypeFlags flags) {
        return g_type_module_register_type(G_TYPE_MODULE(self), parent, name, info, flags);
    };
    plugin->add_interface = [](ThunarxProviderPlugin* self, GType type, GType interface,
                               const GInterfaceInfo* info) {
        g_type_module_add_interface(G_TYPE_MODULE(self), type, interface, info);
    };
}

GType hostModuleType() {
    static const GType type = [] {
        auto initClass = [](gpointer klass, gpointer) {
            G_TYPE_MODULE_CLASS(klass)->load = loadTypes;
            G_TYPE_MODULE_CLASS(klass)->unload = [](GTypeModule*) {};
            // Thunar's plugin interface has a "resident" property; modules stay loaded.
            G_OBJECT_CLASS(klass)->get_property = [](GObject*, guint, GValue* value, GParamSpec*) {
                g_value_set_boolean(value, TRUE);
            };
            G_OBJECT_CLASS(klass)->set_property = [](GObject*, guint, const GValue*, GParamSpec*) {
            };
            g_object_class_override_property(G_OBJECT_CLASS(klass), 1, "resident");
        };
        const GTypeInfo info = {
            sizeof(GTypeModuleClass), nullptr, nullptr, initClass, nullptr, nullptr,
            sizeof(HostModule),       0,       nullptr, nullptr};
        const GType made =
            g_type_register_static(G_TYPE_TYPE_MODULE, "Gtk3HostModule", &info, GTypeFlags(0));
        const GInterfaceInfo plugin = {initPlugin, nullptr, nullptr};
        g_type_add_interface_static(made, THUNARX_TYPE_PROVIDER_PLUGIN, &plugin);
        return made;
    }();
    return type;
}

}  // namespace

bool loadModule(FileManager manager, const std::string& path) {
    if (!g_providers[manager].empty())
        return true;
    auto* host = reinterpret_cast<HostModule*>(g_object_new(hostModuleType(), nullptr));
    host->manager = manager;
    host->path = g_strdup(path.c_str());
    return g_type_module_use(G_TYPE_MODULE(host)) && !g_providers[manager].empty();
}

GObject* moduleProvider(FileManager manager, GType interfaceType) {
    for (GObject* object : g_providers[manager]) {
        if (G_TYPE_CHECK_INSTANCE_TYPE(object, interfaceType))
            return object;
    }
    return nullptr;
}

bool runUntil(const std::function<bool()>& done, int seconds) {
    const gint64 deadline = g_get_monotonic_time() + gint64{seconds} * G_USEC_PER_SEC;
    while (!done() && g_get_monotonic_time() < deadline) {
        if (!g_main_context_iteration(nullptr, FALSE))
            g_usleep(500);
    }
    return done();
}
