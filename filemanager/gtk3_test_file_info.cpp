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

namespace {

void initThunarInterface(gpointer iface, gpointer) {
    auto* info = static_cast<ThunarxFileInfoIface*>(iface);
    info->get_location = stand_in::getLocation<ThunarxFileInfo>;
    info->get_name = stand_in::getName<ThunarxFileInfo>;
    info->get_uri = stand_in::getUri<ThunarxFileInfo>;
    info->is_directory = stand_in::isDirectory<ThunarxFileInfo>;
}

GType standInType() {
    static const GType type = [] {
        GType made = stand_in::registerType("StandInFile", [](gpointer klass, gpointer) {
            G_OBJECT_CLASS(klass)->finalize = stand_in::finalize;
        });
        const GInterfaceInfo caja = {
            stand_in::initFileInfoInterface<CajaFileInfoIface, CajaFileInfo>, nullptr, nullptr};
        const GInterfaceInfo nemo = {
            stand_in::initFileInfoInterface<NemoFileInfoInterface, NemoFileInfo>, nullptr, nullptr};
        const GInterfaceInfo thunar = {initThunarInterface, nullptr, nullptr};
        g_type_add_interface_static(made, CAJA_TYPE_FILE_INFO, &caja);
        g_type_add_interface_static(made, NEMO_TYPE_FILE_INFO, &nemo);
        g_type_add_interface_static(made, THUNARX_TYPE_FILE_INFO, &thunar);
        caja_file_info_getter = stand_in::lookUp<CajaFileInfo>;
        nemo_file_info_getter = stand_in::lookUp<NemoFileInfo>;
        return made;
    }();
    return type;
}

}  // namespace

StandInFile* newStandInFile(const std::string& path) {
    return stand_in::make(standInType(), path);
}

// Thunar's interface declares the signal; Caja and Nemo connect to it by name.
void emitChanged(StandInFile* file) {
    thunarx_file_info_changed(THUNARX_FILE_INFO(file));
}
