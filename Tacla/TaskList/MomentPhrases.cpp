#include "Tacla/TaskList/MomentPhrases.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace tacla {

namespace {

using Words = std::span<const std::string>;

constexpr std::array<std::string_view, 7> weekdays{"dimanche", "lundi",    "mardi", "mercredi",
                                                   "jeudi",    "vendredi", "samedi"};
constexpr std::array<std::string_view, 12> months{"janvier", "fevrier", "mars",      "avril",   "mai",      "juin",
                                                  "juillet", "aout",    "septembre", "octobre", "novembre", "decembre"};
constexpr std::array<std::string_view, 13> numbers{"",     "un",   "deux", "trois", "quatre", "cinq", "six",
                                                   "sept", "huit", "neuf", "dix",   "onze",   "douze"};
constexpr std::array<DayPart, 4> dayParts{
    {{"matin", {9, 0}, 0, 12}, {"midi", {12, 0}, 11, 14}, {"apres-midi", {14, 0}, 12, 19}, {"soir", {19, 0}, 16, 23}}};

// What the words of one phrase say.
struct Said {
    int weekday = -1; // 0 is Sunday
    std::int64_t count = 0, day = 0, month = 0, year = 0;
    char unit = 0; // j, s, m or a
    Clock clock{};
    const DayPart* part = nullptr;
};

template <std::size_t N>
std::optional<int> placeIn(const std::array<std::string_view, N>& names, std::string_view word) {
    const auto at = std::ranges::find(names, word);
    return at == names.end() || word.empty() ? std::nullopt : std::optional(static_cast<int>(at - names.begin()));
}

std::optional<std::int64_t> numberOf(std::string_view word, std::size_t digits, std::int64_t least, std::int64_t most) {
    const auto number = word.size() <= digits ? dravel::parsedDigits(word) : std::nullopt;
    return number && *number >= least && *number <= most ? number : std::nullopt;
}

bool isAt(Words words, std::size_t place, std::string_view word) {
    return place < words.size() && words[place] == word;
}

// Each of these reads one thing at the beginning of the words, of which there is one at least, and tells how many words
// it took: 0 for none.
using Reader = std::size_t (*)(Words, Said&);

std::size_t readWeekday(Words words, Said& said) {
    const auto place = placeIn(weekdays, words[0]);
    said.weekday = place.value_or(-1);
    return place ? 1 : 0;
}

std::size_t readMonth(Words words, Said& said) {
    const auto place = placeIn(months, words[0]);
    if (place) said.month = *place + 1;
    return place ? 1 : 0;
}

std::size_t readDayOfMonth(Words words, Said& said) {
    if (isAt(words, 1, "h") || isAt(words, 1, "heures")) return 0;
    const auto number = words[0] == "1er" ? std::optional<std::int64_t>(1) : numberOf(words[0], 2, 1, 31);
    said.day = number.value_or(0);
    return number ? 1 : 0;
}

// Alone, the first is always "1er": "le 1" is a newspaper.
std::size_t readLoneDayOfMonth(Words words, Said& said) {
    return words[0] == "1" || words[0] == "01" ? 0 : readDayOfMonth(words, said);
}

std::size_t readYear(Words words, Said& said) {
    const auto number = numberOf(words[0], 4, 2000, 2999);
    said.year = number.value_or(0);
    return number ? 1 : 0;
}

std::size_t readCount(Words words, Said& said) {
    if (const auto place = placeIn(numbers, words[0] == "une" ? "un" : words[0]))
        said.count = *place;
    else
        said.count = numberOf(words[0], 3, 1, 999).value_or(0);
    return said.count > 0 ? 1 : 0;
}

std::size_t readUnit(Words words, Said& said) {
    for (const std::string_view name : {"jour", "jours", "semaine", "semaines", "mois", "an", "ans"})
        if (words[0] == name) return said.unit = name[0], 1;
    return 0;
}

std::size_t readPart(Words words, Said& said) {
    const bool two = words[0] == "apres" && isAt(words, 1, "midi");
    const auto part = std::ranges::find(dayParts, two ? "apres-midi" : words[0], &DayPart::name);
    if (part == dayParts.end()) return 0;
    said.part = &*part;
    return two ? 2 : 1;
}

std::size_t readAfterTomorrow(Words words, Said&) {
    if (words[0] == "apres-demain") return 1;
    return words[0] == "apres" && isAt(words, 1, "demain") ? 2 : 0;
}

std::size_t readWeekend(Words words, Said&) {
    if (words[0] == "week-end" || words[0] == "weekend") return 1;
    return words[0] == "week" && isAt(words, 1, "end") ? 2 : 0;
}

bool setClock(Said& said, std::string_view hour, std::string_view minute) {
    const auto h = numberOf(hour, 2, 0, 23), m = numberOf(minute, 2, 0, 59);
    if (!h || !m || minute.size() != 2) return false;
    said.clock = {*h, *m};
    return true;
}

// "14" and an hour's sign, with or without minutes behind it: "14 h", "14 h 30".
std::size_t readSpacedClock(Words words, Said& said) {
    if (words.size() > 2 && setClock(said, words[0], words[2])) return 3;
    return setClock(said, words[0], "00") ? 2 : 0;
}

std::size_t readClock(Words words, Said& said) {
    const std::string_view word = words[0];
    if (isAt(words, 1, "h")) return readSpacedClock(words, said);
    const auto sign = word.find_first_of("h:");
    if (sign == word.npos) return 0;
    const auto minute = word.substr(sign + 1);
    return setClock(said, word.substr(0, sign), minute.empty() && word[sign] == 'h' ? "00" : minute) ? 1 : 0;
}

std::size_t readHours(Words words, Said& said) {
    return isAt(words, 1, "heures") || isAt(words, 1, "heure") ? readSpacedClock(words, said) : 0;
}

// "12/01", "12/01/2027", "12-1-27", "2027-01-12": a year of two digits is one of this century.
std::size_t readDate(Words words, Said& said) {
    const std::string_view word = words[0], sign = word.find('/') == word.npos ? "-" : "/";
    auto pieces = dravel::split(word, sign);
    if (pieces.size() < 2 || pieces.size() > 3 || (sign == "-" && pieces.size() == 2)) return 0;
    if (sign == "-" && pieces[0].size() == 4) std::swap(pieces[0], pieces[2]);
    const auto day = numberOf(pieces[0], 2, 1, 31), month = numberOf(pieces[1], 2, 1, 12);
    if (!day || !month) return 0;
    said.day = *day, said.month = *month;
    if (pieces.size() == 2) return 1;
    const bool isShort = pieces[2].size() == 2;
    const auto year = numberOf(pieces[2], 4, isShort ? 0 : 2000, isShort ? 99 : 2999);
    said.year = year.value_or(0) + (isShort ? 2000 : 0);
    return year ? 1 : 0;
}

// Without "le" before it a month has two digits: "1/2" is a half, "24/7" is always.
std::size_t readPlainDate(Words words, Said& said) {
    const auto slash = words[0].find('/');
    return slash != std::string::npos && slash + 3 > words[0].size() ? 0 : readDate(words, said);
}

struct Place {
    char letter;
    Reader read;
};
constexpr Place places[] = {
    {'A', readAfterTomorrow},  {'C', readClock}, {'D', readDayOfMonth}, {'E', readWeekend}, {'H', readHours},
    {'L', readLoneDayOfMonth}, {'M', readMonth}, {'N', readCount},      {'P', readPart},    {'S', readPlainDate},
    {'T', readDate},           {'U', readUnit},  {'W', readWeekday},    {'Y', readYear}};

int weekdayOf(Day day) { return dravel::wall::weekday(day.year, day.month, day.day); }

// From 1 to 7 days later.
Day nextWeekday(Day today, int weekday) {
    const int step = (weekday - weekdayOf(today) + 7) % 7;
    return today.plusDays(step == 0 ? 7 : step);
}

Day monthsLater(Day day, std::int64_t count) {
    const auto month = day.month - 1 + count;
    Day moved{day.year + month / 12, month % 12 + 1, day.day};
    while (moved.plusDays(0) != moved) --moved.day; // 31 January and a month: the last of February
    return moved;
}

bool exists(Day day) { return day.plusDays(0) == day; }

// The next day that is written so, today's own date included; none where there is no such day, or it is over.
std::optional<Day> writtenDay(const Said& said, Day today) {
    const auto fits = [&](Day day) {
        return day >= today && exists(day) && (said.weekday < 0 || said.weekday == weekdayOf(day));
    };
    std::optional<Day> next;
    if (said.year > 0) {
        next = Day{said.year, said.month, said.day};
    } else if (said.month > 0) {
        for (auto year = today.year; (!next || *next < today || !exists(*next)) && year <= today.year + 8; ++year)
            next = Day{year, said.month, said.day};
    } else {
        for (Day month{today.year, today.month, 1}; !next || *next < today || !exists(*next);
             month = monthsLater(month, 1))
            next = Day{month.year, month.month, said.day};
    }
    return next && fits(*next) ? next : std::nullopt;
}

using Says = std::optional<Day> (*)(const Said&, Day today);

constexpr Says toDay = [](const Said&, Day today) { return std::optional(today); };
constexpr Says toTomorrow = [](const Said&, Day today) { return std::optional(today.plusDays(1)); };
constexpr Says toAfterTomorrow = [](const Said&, Day today) { return std::optional(today.plusDays(2)); };
constexpr Says toWeekday = [](const Said& said, Day today) { return std::optional(nextWeekday(today, said.weekday)); };
constexpr Says toWeekLater = [](const Said& said, Day today) {
    return std::optional(nextWeekday(today, said.weekday).plusDays(7));
};
constexpr Says toTwoWeeksLater = [](const Said& said, Day today) {
    return std::optional(nextWeekday(today, said.weekday).plusDays(14));
};
constexpr Says toNextWeek = [](const Said&, Day today) { return std::optional(today.nextMonday()); };
constexpr Says toNextSaturday = [](const Said&, Day today) { return std::optional(nextWeekday(today, 6)); };
// On a Saturday it has begun.
constexpr Says toWeekend = [](const Said&, Day today) {
    return std::optional(weekdayOf(today) == 6 ? today : nextWeekday(today, 6));
};
constexpr Says toLater = [](const Said& said, Day today) -> std::optional<Day> {
    if (said.unit == 'j') return today.plusDays(said.count);
    if (said.unit == 's') return today.plusDays(7 * said.count);
    return monthsLater(today, said.unit == 'a' ? 12 * said.count : said.count);
};

// A capital stands for what its reader above takes; "?" is behind what may be missing. A phrase without a day tells the
// time, or the priority where it tells no time either.
enum class Tells { day, clock, noon, midnight, strong };
struct Pattern {
    std::string_view words;
    Tells tells;
    Says day = nullptr;
};
constexpr Pattern patterns[] = {
    {"aujourdhui", Tells::day, toDay},
    {"ce P", Tells::day, toDay},
    {"cet P", Tells::day, toDay},
    {"demain P?", Tells::day, toTomorrow},
    {"A P?", Tells::day, toAfterTomorrow},
    {"W prochain? P?", Tells::day, toWeekday},
    {"W en huit", Tells::day, toWeekLater},
    {"W en quinze", Tells::day, toTwoWeeksLater},
    {"la semaine prochaine", Tells::day, toNextWeek},
    {"le E", Tells::day, toWeekend},
    {"ce E", Tells::day, toWeekend},
    {"le E prochain", Tells::day, toNextSaturday},
    {"dans N U", Tells::day, toLater},
    {"le L", Tells::day, writtenDay},
    {"le D M Y?", Tells::day, writtenDay},
    {"le? W le? D M? Y?", Tells::day, writtenDay},
    {"le? W le? T", Tells::day, writtenDay},
    {"le T", Tells::day, writtenDay},
    {"S", Tells::day, writtenDay},
    {"a? C", Tells::clock},
    {"a H", Tells::clock},
    {"a midi", Tells::noon},
    {"a minuit", Tells::midnight},
    {"!", Tells::strong},
    {"!!", Tells::strong},
    {"!!!", Tells::strong},
    {"urgent", Tells::strong},
    {"prioritaire", Tells::strong},
};

std::size_t readPiece(std::string_view piece, Words words, Said& said) {
    if (words.empty()) return 0;
    const auto* place = std::ranges::find(places, piece[0], &Place::letter);
    if (place != std::end(places)) return place->read(words, said);
    return words[0] == piece ? 1 : 0;
}

// How many words the pattern takes, 0 when they are others.
std::size_t readPattern(std::string_view pattern, Words words, Said& said) {
    std::size_t taken = 0;
    for (auto rest = pattern; !rest.empty();) {
        auto piece = rest.substr(0, rest.find(' '));
        rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
        const bool optional = piece.ends_with('?');
        if (optional) piece.remove_suffix(1);
        const auto count = readPiece(piece, words.subspan(taken), said);
        if (count == 0 && !optional) return 0;
        taken += count;
    }
    return taken;
}

std::optional<MomentPhrase> phraseOf(const Pattern& pattern, Words words, Day today) {
    Said said;
    MomentPhrase phrase{.length = readPattern(pattern.words, words, said), .day = {}, .clock = {}};
    if (phrase.length == 0) return {};
    phrase.part = said.part;
    switch (pattern.tells) {
    case Tells::day:
        phrase.day = pattern.day(said, today);
        if (!phrase.day) return {};
        break;
    case Tells::clock: phrase.clock = said.clock; break;
    case Tells::noon: phrase.clock = Clock{12, 0}; break;
    case Tells::midnight: phrase.clock = Clock{0, 0}; break;
    case Tells::strong: phrase.strong = true; break;
    }
    return phrase;
}

}

bool MomentPhrase::join(const MomentPhrase& other) {
    if ((day && other.day) || (clock && other.clock)) return false;
    const auto& hour = clock ? clock : other.clock;
    const auto* said = part ? part : other.part;
    if (hour && said && (hour->hour < said->firstHour || hour->hour > said->lastHour)) return false;
    if (other.day) day = other.day;
    if (other.clock) clock = other.clock;
    part = said;
    strong = strong || other.strong;
    return true;
}

std::optional<MomentPhrase> phraseAt(Words words, Day today) {
    if (isAt(words, 0, "pour") && words.size() > 1 && words[1] != "pour") {
        auto phrase = phraseAt(words.subspan(1), today);
        if (!phrase || phrase->strong) return {};
        ++phrase->length;
        return phrase;
    }
    std::optional<MomentPhrase> longest;
    for (const auto& pattern : patterns)
        if (const auto phrase = phraseOf(pattern, words, today);
            phrase && (!longest || phrase->length > longest->length))
            longest = phrase;
    return longest;
}

bool isWeekday(std::string_view word) { return placeIn(weekdays, word).has_value(); }

}
