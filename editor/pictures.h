#pragma once

#include <QPixmap>

// The editor's pictures, drawn in code rather than read from image files: reading the
// first image makes Qt look through its image format plugins, which costs a noticeable
// part of the start-up time, while drawing these few shapes costs next to nothing.
//
// Each picture is drawn at its own size in logical pixels (the window icon 32 x 32, the
// delete picture 50 x 32, the logo 116 x 33, the open icons 30 x 30, the banner
// 303 x 42), antialiased on a transparent background, into a pixmap of that size times
// devicePixelRatio that carries the ratio, so that it stays sharp on any screen.
enum class Picture { AppIcon, Delete, Logo, OpenFile, OpenFolder, Banner };

QPixmap drawPicture(Picture which, qreal devicePixelRatio);
