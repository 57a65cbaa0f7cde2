#pragma once

#include <QString>
#include <cstddef>
#include <string>
#include <string_view>

// Text crosses between the description box and the program here only: the program's
// text is UTF-8 with CR LF breaks, the widget keeps "\n" (or the paragraph separator in
// a selection).

std::string toProgramText(const QString& widgetText);
// CR LF and a lone CR become one "\n" each.
QString toWidgetText(std::string_view programText);
// The widget's index of a position in the program's text, where a break counts two
// characters and a character outside the BMP one; the text's end beyond its length.
int widgetPosition(const QString& widgetText, std::size_t programPosition);
