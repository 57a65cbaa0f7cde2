#include "filemanager/gtk3_test_file_info.h"

#include <gtk/gtk.h>
extern "C" {
#include <libcaja-extension/caja-file-info.h>
#include <libnemo-extension/nemo-file-info.h>
#include <thunarx/thunarx.h>
// Set by each file manager so that its modules can find its file objects.
extern CajaFileInfo* (*caja_file_info_getter)(GFile* location, gboolean create);
extern NemoFileInfo* (*nemo_file_info_getter)(GFile* location, gboolean create);
}

#include <unordered_set>

namespace {

std::unordered_set<StandInFile*> g_alive;

template <typename Info>
StandInFile* self(Info* info) {
    return reinterpret_cast<StandInFile*>(info);
}

template <typename Info>
GFile* getLocation(Info* info) {
    return G_FILE(g_object_ref(self(info)->location));
}

template <typename Info>
char* getName(Info* info) {
    return g_file_get_basename(self(info)->location);
}

template <typename Info>
char* getUri(Info* info) {
    return g_file_get_uri(self(info)->location);
}

template <typename Info>
gboolean isDirectory(Info* info) {
    return g_file_query_file_type(self(info)->location, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS,
                                  nullptr) == G_FILE_TYPE_DIRECTORY;
}

template <typename Info>
gboolean isGone(Info* info) {
    return !g_file_query_exists(self(info)->location, nullptr);
}

template <typename Info>
void addStringAttribute(Info* info, const char* name, const char* value) {
    (*self(info)->attributes)[name] = value;
}

template <typename Info>
char* getStringAttribute(Info* info, const char* name) {
    auto found = self(info)->attributes->find(name);
    return found == self(info)->attributes->end() ? nullptr : g_strdup(found->second.c_str());
}

template <typename Info>
void invalidateExtensionInfo(Info* info) {
    ++self(info)->invalidations;
}

template <typename Info>
Info* lookUp(GFile* location, gboolean) {
    for (StandInFile* file : g_alive) {
        if (g_file_equal(file->location, location))
            return reinterpret_cast<Info*>(g_object_ref(G_OBJECT(file)));
    }
    return nullptr;
}

// Caja's and Nemo's interfaces have the same members.
template <typename Interface, typename Info>
void initColumnManagerInterface(gpointer iface, gpointer) {
    auto* info = static_cast<Interface*>(iface);
    info->get_location = getLocation<Info>;
    info->get_name = getName<Info>;
    info->get_uri = getUri<Info>;
    info->is_directory = isDirectory<Info>;
    info->is_gone = isGone<Info>;
    info->add_string_attribute = addStringAttribute<Info>;
    info->get_string_attribute = getStringAttribute<Info>;
    info->invalidate_extension_info = invalidateExtensionInfo<Info>;
}

void initThunarInterface(gpointer iface, gpointer) {
    auto* info = static_cast<ThunarxFileInfoIface*>(iface);
    info->get_location = getLocation<ThunarxFileInfo>;
    info->get_name = getName<ThunarxFileInfo>;
    info->get_uri = getUri<ThunarxFileInfo>;
    info->is_directory = isDirectory<ThunarxFileInfo>;
}

void finalize(GObject* object) {
    auto* file = reinterpret_cast<StandInFile*>(object);
    g_alive.erase(file);
    g_object_unref(file->location);
    delete file->attributes;
    G_OBJECT_CLASS(g_type_class_peek(G_TYPE_OBJECT))->finalize(object);
}

GType standInType() {
    static const GType type = [] {
        auto initClass = [](gpointer klass, gpointer) {
            G_OBJECT_CLASS(klass)->finalize = finalize;
        };
        const GTypeInfo info = {sizeof(GObjectClass), nullptr, nullptr, initClass, nullptr, nullptr,
                                sizeof(StandInFile),  0,       nullptr, nullptr};
        GType made = g_type_register_static(G_TYPE_OBJECT, "StandInFile", &info, GTypeFlags(0));
        const GInterfaceInfo caja = {initColumnManagerInterface<CajaFileInfoIface, CajaFileInfo>,
                                     nullptr, nullptr};
        const GInterfaceInfo nemo = {
            initColumnManagerInterface<NemoFileInfoInterface, NemoFileInfo>, nullptr, nullptr};
        const GInterfaceInfo thunar = {initThunarInterface, nullptr, nullptr};
        g_type_add_interface_static(made, CAJA_TYPE_FILE_INFO, &caja);
        g_type_add_interface_static(made, NEMO_TYPE_FILE_INFO, &nemo);
        g_type_add_interface_static(made, THUNARX_TYPE_FILE_INFO, &thunar);
        caja_file_info_getter = lookUp<CajaFileInfo>;
        nemo_file_info_getter = lookUp<NemoFileInfo>;
        return made;
    }();
    return type;
}

}  // namespace

StandInFile* newStandInFile(const std::string& path) {
    auto* file = static_cast<StandInFile*>(g_object_new(standInType(), nullptr));
    file->location = g_file_new_for_path(path.c_str());
    file->attributes = new std::map<std::string, std::string, std::less<>>;
    g_alive.insert(file);
    return file;
}

// Thunar's interface declares the signal; Caja and Nemo connect to it by name.
void emitChanged(StandInFile* file) {
    thunarx_file_info_changed(THUNARX_FILE_INFO(file));
}
