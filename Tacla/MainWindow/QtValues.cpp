#include "Tacla/MainWindow/QtValues.h"

#include <QLocale>

namespace tacla {

namespace Theme = dravel::Theme;
using dravel::TagLook;

std::string shortTime(dravel::Instant instant) {
    const auto locale = QLocale::system();
    const auto clock = Clock::of(instant);
    // The "C" locale writes seconds too.
    if (locale.language() == QLocale::C) return clock.description();
    return fromQt(locale.toString(toQt(clock), QLocale::ShortFormat));
}

const Theme::Tone& toneOf(ColourRole role) {
    switch (role) {
    case ColourRole::accent: return Theme::accent;
    case ColourRole::plain: return Theme::textSecondary;
    case ColourRole::faint: return Theme::textTertiary;
    case ColourRole::success: return Theme::successText;
    case ColourRole::warning: return Theme::warningText;
    case ColourRole::danger: return Theme::dangerText;
    }
    return Theme::text;
}

TagLook tagLookOf(ColourRole role) {
    switch (role) {
    case ColourRole::success: return TagLook::success();
    case ColourRole::warning: return TagLook::warning();
    case ColourRole::danger: return TagLook::danger();
    case ColourRole::accent:
    case ColourRole::plain:
    case ColourRole::faint: break;
    }
    return TagLook::plain();
}

QList<QTextLayout::FormatRange> formatRanges(std::string_view text, const std::vector<dravel::TextRange>& ranges) {
    const auto units = [&](std::size_t from, std::size_t to) {
        return static_cast<int>(toQt(text.substr(from, to - from)).size());
    };
    QList<QTextLayout::FormatRange> formats;
    for (const auto& [begin, end] : ranges)
        if (end <= text.size()) formats.append({units(0, begin), units(begin, end), {}});
    return formats;
}

}
