#pragma once

#include <gio/gio.h>

#include <functional>
#include <map>
#include <string>
#include <unordered_set>

// A stand-in for a file manager's own file objects: its file-info interfaces over one
// path, recording the attributes a provider adds and each invalidation of its
// information.
struct StandInFile {
    GObject parent;
    GFile* location;
    std::map<std::string, std::string, std::less<>>* attributes;
    int invalidations;
};

// The interfaces' methods, for any file manager's type of file object (`Info`), and
// the objects' life; for the harnesses that register a type.
namespace stand_in {

// The objects alive, which the file managers' lookups find.
inline std::unordered_set<StandInFile*> alive;

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

// The file manager's lookup of its object for a location.
template <typename Info>
Info* lookUp(GFile* location, gboolean) {
    for (StandInFile* file : alive) {
        if (g_file_equal(file->location, location))
            return reinterpret_cast<Info*>(g_object_ref(G_OBJECT(file)));
    }
    return nullptr;
}

// The interfaces of GNOME Files, Caja and Nemo have these members.
template <typename Interface, typename Info>
void initFileInfoInterface(gpointer iface, gpointer) {
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

inline void finalize(GObject* object) {
    auto* file = reinterpret_cast<StandInFile*>(object);
    alive.erase(file);
    g_object_unref(file->location);
    delete file->attributes;
    G_OBJECT_CLASS(g_type_class_peek(G_TYPE_OBJECT))->finalize(object);
}

// A type of stand-in objects, registered without interfaces.
inline GType registerType(const char* name, GClassInitFunc initClass) {
    const GTypeInfo info = {sizeof(GObjectClass), nullptr, nullptr, initClass, nullptr, nullptr,
                            sizeof(StandInFile),  0,       nullptr, nullptr};
    return g_type_register_static(G_TYPE_OBJECT, name, &info, GTypeFlags(0));
}

// A new object of the type (full reference) for the local path.
inline StandInFile* make(GType type, const std::string& path) {
    auto* file = static_cast<StandInFile*>(g_object_new(type, nullptr));
    file->location = g_file_new_for_path(path.c_str());
    file->attributes = new std::map<std::string, std::string, std::less<>>;
    alive.insert(file);
    return file;
}

}  // namespace stand_in
