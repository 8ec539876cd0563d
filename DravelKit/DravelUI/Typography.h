#pragma once

#include <QFont>

namespace dravel::Theme {

// A type style in logical pixels: the size of the type and the height of the line box that it stands in.
struct TextStyle {
    int size = 13;
    int line = 18;
    int weight = QFont::Normal;
    bool display = false; // Comfortaa, for page titles
    bool struck = false;

    bool operator==(const TextStyle&) const = default;
    constexpr TextStyle withLine(int height) const { return {size, height, weight, display, struck}; }
    constexpr TextStyle struckOut(bool on = true) const { return {size, line, weight, display, on}; }
};

namespace Typography {
inline constexpr TextStyle pageTitle{30, 36, QFont::Bold, true}, stat{28, 34, QFont::DemiBold},
    cardTitle{14, 20, QFont::DemiBold}, subtitle{13, 18, QFont::DemiBold}, body{13, 18, QFont::Normal},
    bodyMedium{13, 18, QFont::Medium}, callout{12, 16, QFont::Normal}, caption{11, 14, QFont::Normal},
    captionStrong{11, 14, QFont::DemiBold}, footnote{10, 12, QFont::Medium},
    taskTitle = bodyMedium.withLine(20); // titles of list rows breathe a little more
}

// True when the four files of Atkinson Hyperlegible Next were compiled in; decided once per process.
bool hasBrandFont();

// The brand family, or the system's at the same size and weight; colour emoji as fallback. Cheap: fonts are shared.
const QFont& font(const TextStyle&);

}
