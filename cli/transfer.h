#pragma once

#include <string>

#include "cli/session.h"

// Moving or copying a file or folder with its description: the entry goes as `mv` or
// `cp -a` takes it (across file systems too, with mode, times and extended
// attributes), then every store follows: the exported file moves or is copied along,
// the entry leaves its folder's index and descript.ion (a move) and joins the
// destination's, and the failsafe records are re-keyed or copied, a folder's with
// everything under it. Afterwards the destination's description is what the source's
// was; when a store could not follow, the full save stores it at the destination.
// The whole call holds the turns (ItemTurns) of both folders and of a moved folder,
// so a save of either item runs wholly before or after it.
//
// Refused (exit 2, nothing changed): a missing source, an existing destination or
// destination exported file, a destination inside the source, a folder copied
// without `recursive`.

struct Transfer {
    std::string source, destination;
    bool keepSource = false;  // a copy
    bool recursive = false;   // a copy may take a folder
};

[[nodiscard]] int runTransfer(Session& session, const Transfer& transfer);
