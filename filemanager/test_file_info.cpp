#include "filemanager/test_file_info.h"

extern "C" {
#include <nautilus-extension.h>
// Set by the file manager so that modules can find its file objects.
extern NautilusFileInfo* (*nautilus_file_info_getter)(GFile* location, gboolean create);
}

namespace {

guint g_changedSignal = 0;

void initClass(gpointer klass, gpointer) {
    G_OBJECT_CLASS(klass)->finalize = stand_in::finalize;
    g_changedSignal = g_signal_new("changed", G_TYPE_FROM_CLASS(klass), G_SIGNAL_RUN_LAST, 0,
                                   nullptr, nullptr, nullptr, G_TYPE_NONE, 0);
}

}  // namespace

GType testFileInfoType() {
    static const GType type = [] {
        GType made = stand_in::registerType("TestFileInfo", initClass);
        const GInterfaceInfo fileInfo = {
            stand_in::initFileInfoInterface<NautilusFileInfoInterface, NautilusFileInfo>, nullptr,
            nullptr};
        g_type_add_interface_static(made, NAUTILUS_TYPE_FILE_INFO, &fileInfo);
        nautilus_file_info_getter = stand_in::lookUp<NautilusFileInfo>;
        return made;
    }();
    return type;
}

TestFileInfo* newTestFileInfo(const std::string& path) {
    return stand_in::make(testFileInfoType(), path);
}

void emitChanged(TestFileInfo* info) {
    g_signal_emit(info, g_changedSignal, 0);
}
