#pragma once

#include <glib-object.h>

#include <functional>
#include <string>

// The file managers' side of the GTK 3 modules, for the harness: loads a built module
// through its entry points as Caja, Nemo or Thunar does and makes its provider objects.

enum class FileManager { caja, nemo, thunar };

// Loads the file manager's module once per process; false, with the reason on standard
// error, when it cannot be loaded.
bool loadModule(FileManager manager, const std::string& path);

// The loaded module's object that implements the interface, or nullptr.
GObject* moduleProvider(FileManager manager, GType interfaceType);

// Runs the main context until `done` or the time passed; whether it was done.
bool runUntil(const std::function<bool()>& done, int seconds = 5);
