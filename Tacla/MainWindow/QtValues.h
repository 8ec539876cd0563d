#pragma once

#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/MainWindow/Rows/RowContents.h"

#include <QDate>
#include <QString>
#include <QTime>

#include <filesystem>
#include <string>
#include <string_view>

// Between the values of the program and those of the widgets.
namespace tacla {

inline QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline QString pathText(const std::filesystem::path& path) { return toQt(std::string_view(path.native())); }
inline std::string fromQt(const QString& text) { return text.toStdString(); }

// Not valid for a day that a picker cannot show, such as one of the year 0.
inline QDate toQt(Day day) {
    return {static_cast<int>(day.year), static_cast<int>(day.month), static_cast<int>(day.day)};
}
inline Day fromQt(QDate date) { return {date.year(), date.month(), date.day()}; }
inline QTime toQt(Clock clock) { return {static_cast<int>(clock.hour), static_cast<int>(clock.minute)}; }
inline Clock fromQt(QTime time) { return {time.hour(), time.minute()}; }

// The time of day in the short notation of the user's locale; "10:40" where none is set.
std::string shortTime(dravel::Instant);

const dravel::Theme::Tone& toneOf(ColourRole);
dravel::TagLook tagLookOf(ColourRole);

}
