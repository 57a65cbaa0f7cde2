#pragma once

#include <array>
#include <cmath>
#include <optional>
#include <string_view>

// The three fixed lists that the settings point into by 0-based position: the
// description box's font and size, and the background colour. The main window and
// the options dialog fill their lists from these, in this order.

inline constexpr std::array<std::string_view, 8> kFontNames = {
    "Arial",          "Courier",      "Courier New",     "Comic Sans MS",
    "Lucida Console", "Segoe Script", "Times New Roman", "Verdana"};

inline constexpr std::array<std::string_view, 6> kFontSizes = {"08", "10", "12", "16", "20", "24"};

struct NamedColour {
    std::string_view name;
    int red, green, blue;
};

inline constexpr std::array<NamedColour, 5> kBackgroundColours = {{
    {"Yellow", 255, 255, 128},
    {"Green", 128, 240, 128},
    {"Blue", 112, 160, 240},
    {"Red", 240, 64, 64},
    {"White", 247, 247, 247},
}};

// The colour a list entry names (case-sensitive); nullopt for any other text.
inline std::optional<NamedColour> colourNamed(std::string_view name) {
    for (const NamedColour& colour : kBackgroundColours)
        if (colour.name == name)
            return colour;
    return std::nullopt;
}

// The list position a setting selects. A hand-edited file may hold a fraction, a
// negative number or a position past the end; such a value selects the first entry.
inline int listPosition(double option, std::size_t listSize) {
    if (option < 0 || option >= static_cast<double>(listSize) || std::floor(option) != option)
        return 0;
    return static_cast<int>(option);
}
