#pragma once

#include <gtk/gtk.h>

// The "Description" page that the GTK 3 file managers show in Properties: the whole
// description, where it was read from, and a button that opens the editor on the item.
// The text is read on a worker and filled in when it comes.

// A new page (floating reference) for the local item.
GtkWidget* newDescriptionPage(GFile* item);

// Reads the item's description again, after the file manager saw the item change.
void refreshDescriptionPage(GtkWidget* page);
