#include "filemanager/description_page.h"

#include "filemanager/glib_adapter.h"

namespace {

constexpr char kItemKey[] = "veskor-item";
constexpr char kTextKey[] = "veskor-text";
constexpr char kSourceKey[] = "veskor-source";

GtkWidget* newLabel(const char* name) {
    GtkWidget* label = gtk_label_new(nullptr);
    gtk_widget_set_name(label, name);
    gtk_label_set_selectable(GTK_LABEL(label), TRUE);
    gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    return label;
}

void editClicked(GtkButton* button, gpointer) {
    startEditor(pathOf(G_FILE(g_object_get_data(G_OBJECT(button), kItemKey))));
}

}  // namespace

GtkWidget* newDescriptionPage(GFile* item) {
    GtkWidget* page = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_container_set_border_width(GTK_CONTAINER(page), 12);
    GtkWidget* text = newLabel("veskor-text");
    GtkWidget* source = newLabel("veskor-source");
    GtkWidget* edit = gtk_button_new_with_label("Edit description");
    gtk_widget_set_name(edit, "veskor-edit");
    gtk_widget_set_halign(edit, GTK_ALIGN_START);
    g_object_set_data_full(G_OBJECT(edit), kItemKey, g_object_ref(item), g_object_unref);
    g_signal_connect(edit, "clicked", G_CALLBACK(editClicked), nullptr);
    for (GtkWidget* child : {text, source, edit})
        gtk_box_pack_start(GTK_BOX(page), child, FALSE, FALSE, 0);
    g_object_set_data_full(G_OBJECT(page), kItemKey, g_object_ref(item), g_object_unref);
    g_object_set_data(G_OBJECT(page), kTextKey, text);
    g_object_set_data(G_OBJECT(page), kSourceKey, source);
    gtk_widget_show_all(page);
    refreshDescriptionPage(page);
    return page;
}

void refreshDescriptionPage(GtkWidget* page) {
    auto* item = G_FILE(g_object_get_data(G_OBJECT(page), kItemKey));
    // The labels are kept alive until the answer comes, even if the page is closed first.
    auto* text = GTK_LABEL(g_object_ref(g_object_get_data(G_OBJECT(page), kTextKey)));
    auto* source = GTK_LABEL(g_object_ref(g_object_get_data(G_OBJECT(page), kSourceKey)));
    readDescriptionAsync(pathOf(item), nullptr, [text, source](const ItemDescription& read, bool) {
        gtk_label_set_text(text, read.text.empty() ? "None" : displayText(read.text).c_str());
        gtk_label_set_text(source, displayText(read.status).c_str());
        g_object_unref(text);
        g_object_unref(source);
    });
}
