#include "DravelKit/Foundation/WallCalendar.h"

#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <tuple>

namespace dravel::wall {

namespace {

// Counts the changes of the system's zone, so that each thread knows when its calendar is out of date.
std::atomic<unsigned> zoneGeneration{0};

void check(UErrorCode status) {
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

std::unique_ptr<icu::GregorianCalendar> makeCalendar(std::unique_ptr<icu::TimeZone> zone) {
    UErrorCode status = U_ZERO_ERROR;
    auto calendar = std::make_unique<icu::GregorianCalendar>(zone.release(), icu::Locale::getRoot(), status);
    check(status);
    calendar->setGregorianChange(-8.64e15, status); // proleptic: no Julian days
    check(status);
    calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    return calendar;
}

// A calendar is costly to make and not thread-safe: one a thread, made anew when the zone changed.
icu::GregorianCalendar& localCalendar() {
    thread_local std::unique_ptr<icu::GregorianCalendar> calendar;
    thread_local unsigned generation = 0;
    if (!calendar || generation != zoneGeneration) {
        generation = zoneGeneration;
        calendar = makeCalendar(std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault()));
    }
    return *calendar;
}

UDate millisecondsIn(icu::GregorianCalendar& calendar, const Reading& reading) {
    UErrorCode status = U_ZERO_ERROR;
    calendar.clear();
    calendar.set(static_cast<int>(reading.year), static_cast<int>(reading.month) - 1, static_cast<int>(reading.day),
                 static_cast<int>(reading.hour), static_cast<int>(reading.minute), 0);
    const auto milliseconds = calendar.getTime(status);
    check(status);
    return milliseconds;
}

// Dates without a zone: noon in Greenwich.
UDate noon(std::int64_t year, std::int64_t month, std::int64_t day) {
    thread_local const auto greenwich = makeCalendar(std::unique_ptr<icu::TimeZone>(icu::TimeZone::getGMT()->clone()));
    return millisecondsIn(*greenwich, {year, month, day, 12, 0});
}

// What the system's zone depends on: the variable, and the identity of the file behind the default.
auto zoneSource() {
    const char* variable = std::getenv("TZ");
    struct stat file {};
    ::stat("/etc/localtime", &file);
    return std::tuple(std::string(variable ? variable : ""), variable != nullptr, file.st_ino, file.st_mtim.tv_sec);
}

}

Instant instant(const Reading& reading) {
    return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(millisecondsIn(localCalendar(), reading))));
}

int weekday(std::int64_t year, std::int64_t month, std::int64_t day) {
    const auto days =
        static_cast<std::int64_t>(noon(year, month, day)) / 86'400'000 - (noon(year, month, day) < 0 ? 1 : 0);
    return static_cast<int>(((days + 4) % 7 + 7) % 7); // 1970-01-01 was a Thursday
}

std::string frenchLongDay(std::int64_t year, std::int64_t month, std::int64_t day) {
    UErrorCode status = U_ZERO_ERROR;
    thread_local const auto format = [&] {
        auto made = std::make_unique<icu::SimpleDateFormat>("EEEE d MMMM", icu::Locale::getFrance(), status);
        check(status);
        made->setTimeZone(*icu::TimeZone::getGMT());
        return made;
    }();
    icu::UnicodeString label;
    std::string utf8;
    format->format(noon(year, month, day), label).toUTF8String(utf8);
    return utf8;
}

std::string zoneIdentifier() {
    icu::UnicodeString identifier;
    std::string utf8;
    localCalendar().getTimeZone().getID(identifier).toUTF8String(utf8);
    return utf8;
}

bool refreshZone() {
    static std::mutex mutex;
    static auto known = zoneSource();
    const std::lock_guard guard(mutex);
    auto current = zoneSource();
    if (current == known) return false;
    known = std::move(current);
    ::tzset();
    icu::TimeZone::adoptDefault(icu::TimeZone::detectHostTimeZone());
    ++zoneGeneration;
    return true;
}

}
