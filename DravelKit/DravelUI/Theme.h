#pragma once

#include <QColor>
#include <QFont>

#include <cstdint>
#include <cstdlib>
#include <functional>

class QPalette;
class QWidget;

// The one source of colours, radii, spacing and type: constants, apart from the choice between light and dark, which
// follows the palette of the widget that draws (Look.h makes that palette).
namespace dravel {

enum class Appearance { light, dark };

Appearance appearanceOf(const QPalette&); // dark when the window colour is a dark one
Appearance appearanceOf(const QWidget&);

namespace Theme {

// 0xRRGGBB.
struct RGB {
    std::uint32_t hex = 0;

    bool operator==(const RGB&) const = default;

    // Each channel becomes round(own + t * (other - own)); a result that is no colour ends the process.
    constexpr RGB mixed(RGB with, double t) const {
        std::int64_t result = 0;
        for (const int shift : {16, 8, 0}) {
            const double own = (hex >> shift) & 0xFF, other = (with.hex >> shift) & 0xFF;
            const double exact = own + t * (other - own);
            const auto channel = static_cast<std::int64_t>(exact + (exact < 0 ? -0.5 : 0.5)); // away from zero
            result += channel * (std::int64_t{1} << shift);
        }
        if (result < 0 || result > 0xFFFFFFFF) std::abort();
        return RGB{static_cast<std::uint32_t>(result)};
    }

    QColor color() const {
        return QColor(static_cast<int>((hex >> 16) & 0xFF), static_cast<int>((hex >> 8) & 0xFF),
                      static_cast<int>(hex & 0xFF));
    }
};

// A colour for each appearance.
struct Tone {
    RGB light, dark;

    constexpr explicit Tone(RGB both) : light(both), dark(both) {}
    constexpr Tone(RGB lightValue, RGB darkValue) : light(lightValue), dark(darkValue) {}
    bool operator==(const Tone&) const = default;

    constexpr RGB in(Appearance appearance) const { return appearance == Appearance::dark ? dark : light; }
    QColor on(const QWidget& widget) const; // the value for the appearance of that widget, read anew at each call
    constexpr Tone mixed(const Tone& with, double t) const {
        return {light.mixed(with.light, t), dark.mixed(with.dark, t)};
    }
};

namespace Palette {
inline constexpr RGB blue{0x524FF1}, blueLight{0xE0E7FF}, blueDark{0x403CD9}, violet{0x8179EF}, pink{0xE0B1FF},
    lightBlue{0x97CDFF}, green{0x88C42D}, red{0xE85A5A}, orange{0xFCC83B}, blackText{0x131927}, greyText{0x394050},
    greyDisabled{0x8D93A1}, greyBorder{0xD4D7DD}, grey{0xF5F5F5}, white{0xFFFFFF}, success{0x43B75D}, danger{0xEE443F},
    warning{0xFFAA00}, info{0x0095FF};
}

inline constexpr Tone background{RGB{0xF5F5F5}, RGB{0x131927}}, surface{RGB{0xFFFFFF}, RGB{0x1E2436}},
    border{RGB{0xD4D7DD}, RGB{0x2C3346}}, cardBorder{RGB{0xFFFFFF}, RGB{0x2C3346}}, tile{RGB{0xEEF0F4}, RGB{0x262C3B}},
    text{RGB{0x131927}, RGB{0xF5F5F5}}, textSecondary{RGB{0x394050}, RGB{0xC2C7D0}},
    textTertiary{RGB{0x646B7A}, RGB{0x8D93A1}}, accent{RGB{0x524FF1}, RGB{0x8F8DF6}},
    accentSoft{RGB{0xE0E7FF}, RGB{0x262A52}}, accentOnSoft{RGB{0x403CD9}, RGB{0xB9B7FA}},
    accentSoftPressed{RGB{0xC9D2FF}, RGB{0x343A72}}, success{Palette::success}, warning{Palette::warning},
    danger{Palette::danger}, successText{RGB{0x2F7A45}, RGB{0x43B75D}}, warningText{RGB{0x8F5F00}, RGB{0xFFAA00}},
    dangerText{RGB{0xC0392F}, RGB{0xF26B66}};

// Derived from the tones above.
inline constexpr Tone successSoft = success.mixed(surface, .88), warningSoft = warning.mixed(surface, .88),
                      dangerSoft = danger.mixed(surface, .88), rowHover = surface.mixed(tile, .5),
                      neutralHover = tile.mixed(textTertiary, .12), neutralPressed = tile.mixed(textTertiary, .22),
                      softHover = accentSoft.mixed(accentSoftPressed, .5),
                      accentPressed{Palette::blueDark, accentOnSoft.dark},
                      accentHover = accent.mixed(accentPressed, .5), onAccent{Palette::white, Palette::blackText},
                      outline{Palette::greyDisabled}, white{Palette::white};

namespace Radius {
inline constexpr int xs = 4, sm = 8, md = 16, lg = 24;
}
namespace Space {
inline constexpr int xs = 4, sm = 8, md = 16, lg = 24, xl = 32, xxl = 40;
}

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
}

template <>
struct std::hash<dravel::Theme::RGB> {
    std::size_t operator()(const dravel::Theme::RGB& colour) const noexcept { return colour.hex; }
};
