#include "filemanager/module_host.h"

#include <gmodule.h>

#include <iostream>

extern "C" {
#include <nautilus-extension.h>
}

namespace {

using Initialize = void (*)(GTypeModule*);
using ListTypes = void (*)(const GType**, int*);

std::string g_path;
std::vector<GObject*> g_providers;

gboolean loadModule(GTypeModule* typeModule) {
    GModule* library = g_module_open(g_path.c_str(), G_MODULE_BIND_LAZY);
    gpointer initialize = nullptr, listTypes = nullptr;
    if (!library || !g_module_symbol(library, "nautilus_module_initialize", &initialize) ||
        !g_module_symbol(library, "nautilus_module_list_types", &listTypes)) {
        std::cerr << g_module_error() << '\n';
        return FALSE;
    }
    reinterpret_cast<Initialize>(initialize)(typeModule);
    const GType* types = nullptr;
    int count = 0;
    reinterpret_cast<ListTypes>(listTypes)(&types, &count);
    for (int i = 0; i < count; ++i)
        g_providers.push_back(G_OBJECT(g_object_new(types[i], nullptr)));
    return TRUE;
}

GType hostModuleType() {
    static const GType type = [] {
        auto initClass = [](gpointer klass, gpointer) {
            G_TYPE_MODULE_CLASS(klass)->load = loadModule;
            G_TYPE_MODULE_CLASS(klass)->unload = [](GTypeModule*) {};
        };
        const GTypeInfo info = {
            sizeof(GTypeModuleClass), nullptr, nullptr, initClass, nullptr, nullptr,
            sizeof(GTypeModule),      0,       nullptr, nullptr};
        return g_type_register_static(G_TYPE_TYPE_MODULE, "HostModule", &info, GTypeFlags(0));
    }();
    return type;
}

void completed(NautilusInfoProvider*, gpointer, NautilusOperationResult, gpointer count) {
    ++*static_cast<std::size_t*>(count);
}

}  // namespace

bool loadNautilusModule(const std::string& path) {
    if (!g_providers.empty())
        return true;
    g_path = path;
    testFileInfoType();
    return g_type_module_use(G_TYPE_MODULE(g_object_new(hostModuleType(), nullptr)));
}

GObject* moduleProvider(GType interfaceType) {
    for (GObject* object : g_providers) {
        if (G_TYPE_CHECK_INSTANCE_TYPE(object, interfaceType))
            return object;
    }
    return nullptr;
}

bool runUntil(const std::function<bool()>& done, int seconds) {
    // Each turn blocks until an event, as the file manager's main loop does; the timer
    // ends the wait when nothing comes, and a tick checks conditions that no event
    // announces (a file that another process writes).
    bool late = false;
    const guint tick = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    const guint timer = g_timeout_add_seconds(
        static_cast<guint>(seconds),
        [](gpointer flag) {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_REMOVE;
        },
        &late);
    while (!done() && !late)
        g_main_context_iteration(nullptr, TRUE);
    if (!late)
        g_source_remove(timer);
    g_source_remove(tick);
    return done();
}

InfoRequests::InfoRequests()
    : m_provider(moduleProvider(NAUTILUS_TYPE_INFO_PROVIDER)),
      m_complete(g_cclosure_new(G_CALLBACK(completed), &m_completions, nullptr)) {
    g_closure_set_marshal(m_complete, g_cclosure_marshal_generic);
    g_closure_ref(m_complete);
    g_closure_sink(m_complete);
}

InfoRequests::~InfoRequests() {
    g_closure_unref(m_complete);
}

bool InfoRequests::ask(TestFileInfo* item, int seconds) {
    start(item);
    return finish(seconds);
}

void InfoRequests::start(TestFileInfo* item) {
    ++m_started;
    NautilusOperationHandle* handle = nullptr;
    const NautilusOperationResult result = nautilus_info_provider_update_file_info(
        NAUTILUS_INFO_PROVIDER(m_provider), NAUTILUS_FILE_INFO(item), m_complete, &handle);
    if (result != NAUTILUS_OPERATION_IN_PROGRESS) {
        ++m_atOnce;
        ++m_completions;
    }
}

bool InfoRequests::finish(int seconds) {
    return m_completions == m_started ||
           runUntil([this] { return m_completions == m_started; }, seconds);
}

bool updateFileInfo(const std::vector<TestFileInfo*>& items, int seconds) {
    InfoRequests requests;
    for (TestFileInfo* item : items) {
        if (!requests.ask(item, seconds))
            return false;
    }
    return true;
}

std::string columnValue(TestFileInfo* item) {
    char* value =
        nautilus_file_info_get_string_attribute(NAUTILUS_FILE_INFO(item), "veskor_description");
    std::string text = value ? value : "(not set)";
    g_free(value);
    return text;
}
