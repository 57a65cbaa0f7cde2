#pragma once

#include <QFont>
#include <QString>

// The fonts of the editor's design: Arial in a size and style, the window's own at
// 9.75 points.
//
// Qt looks for substitutes of a face that is not installed (Arial is Liberation Sans
// on most Linux systems) at every new size and style it is asked for, which costs a
// noticeable part of the start-up; these fonts name the face that is installed in
// its place, looked up once a name.

inline constexpr qreal kWindowPoints = 9.75;

QFont designFont(qreal points, bool bold = false, bool italic = false);

// The face the system shows for a face name: the name itself when that face is
// installed, otherwise the face put in its place. GUI thread only.
QString installedFace(const QString& name);
