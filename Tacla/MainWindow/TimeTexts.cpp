#include "Tacla/MainWindow/TimeTexts.h"

#include "Tacla/MainWindow/QtText.h"

#include <QLocale>

namespace tacla {

std::string shortTime(dravel::Instant instant) {
    const auto locale = QLocale::system();
    const auto clock = Clock::of(instant);
    // The "C" locale writes seconds too.
    if (locale.language() == QLocale::C) return clock.description();
    return fromQt(locale.toString(toQt(clock), QLocale::ShortFormat));
}

}
