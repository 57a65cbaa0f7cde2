#include "filemanager/test_file_info.h"

extern "C" {
#include <nautilus-extension.h>
// Set by the file manager so that modules can find its file objects.
extern NautilusFileInfo* (*nautilus_file_info_getter)(GFile* location, gboolean create);
}

#include <unordered_set>

namespace {

std::unordered_set<TestFileInfo*> g_alive;
guint g_changedSignal = 0;

TestFileInfo* self(NautilusFileInfo* info) {
    return reinterpret_cast<TestFileInfo*>(info);
}

GFile* getLocation(NautilusFileInfo* info) {
    return G_FILE(g_object_ref(self(info)->location));
}

char* getName(NautilusFileInfo* info) {
    return g_file_get_basename(self(info)->location);
}

char* getUri(NautilusFileInfo* info) {
    return g_file_get_uri(self(info)->location);
}

gboolean isDirectory(NautilusFileInfo* info) {
    return g_file_query_file_type(self(info)->location, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS,
                                  nullptr) == G_FILE_TYPE_DIRECTORY;
}

gboolean isGone(NautilusFileInfo* info) {
    return !g_file_query_exists(self(info)->location, nullptr);
}

void addStringAttribute(NautilusFileInfo* info, const char* name, const char* value) {
    (*self(info)->attributes)[name] = value;
}

char* getStringAttribute(NautilusFileInfo* info, const char* name) {
    auto found = self(info)->attributes->find(name);
    return found == self(info)->attributes->end() ? nullptr : g_strdup(found->second.c_str());
}

void invalidateExtensionInfo(NautilusFileInfo* info) {
    ++self(info)->invalidations;
}

NautilusFileInfo* lookUp(GFile* location, gboolean) {
    for (TestFileInfo* info : g_alive) {
        if (g_file_equal(info->location, location))
            return NAUTILUS_FILE_INFO(g_object_ref(info));
    }
    return nullptr;
}

void initInterface(gpointer iface, gpointer) {
    auto* info = static_cast<NautilusFileInfoInterface*>(iface);
    info->get_location = getLocation;
    info->get_name = getName;
    info->get_uri = getUri;
    info->is_directory = isDirectory;
    info->is_gone = isGone;
    info->add_string_attribute = addStringAttribute;
    info->get_string_attribute = getStringAttribute;
    info->invalidate_extension_info = invalidateExtensionInfo;
}

void finalize(GObject* object) {
    auto* info = reinterpret_cast<TestFileInfo*>(object);
    g_alive.erase(info);
    g_object_unref(info->location);
    delete info->attributes;
    G_OBJECT_CLASS(g_type_class_peek(G_TYPE_OBJECT))->finalize(object);
}

void initClass(gpointer klass, gpointer) {
    G_OBJECT_CLASS(klass)->finalize = finalize;
    g_changedSignal = g_signal_new("changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_LAST, 0,
                                   nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
}

}  // namespace

GType testFileInfoType() {
    static const GType type = [] {
        const GTypeInfo info = {sizeof(GObjectClass), nullptr, nullptr, initClass, nullptr, nullptr,
                                sizeof(TestFileInfo), 0,       nullptr, nullptr};
        GType made = g_type_register_static(G_TYPE_OBJECT, "TestFileInfo", &info, GTypeFlags(0));
        const GInterfaceInfo fileInfo = {initInterface, nullptr, nullptr};
        g_type_add_interface_static(made, NAUTILUS_TYPE_FILE_INFO, &fileInfo);
        nautilus_file_info_getter = lookUp;
        return made;
    }();
    return type;
}

TestFileInfo* newTestFileInfo(const std::string& path) {
    auto* info = static_cast<TestFileInfo*>(g_object_new(testFileInfoType(), nullptr));
    info->location = g_file_new_for_path(path.c_str());
    info->attributes = new std::map<std::string, std::string, std::less<>>;
    g_alive.insert(info);
    return info;
}

void emitChanged(TestFileInfo* info) {
    g_signal_emit(info, g_changedSignal, 0);
}
