#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"
#include "DravelKit/Foundation/WallNames.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace dravel;
using namespace std::string_literals;

namespace {

Instant utc(int year, int month, int day, int hour, int minute) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / month / day) + hours(hour) + minutes(minute);
}

// Whether the zone is another one then.
bool goTo(const std::string& zone) {
    ::setenv("TZ", zone.c_str(), 1);
    return wall::refreshZone();
}

}

TEST(Text, TellsWellFormedUtf8FromEverythingElse) {
    for (const auto& text : {""s, "abc\0def"s, "Tâche · ❗ 🎉"s, "\xEF\xBB\xBF# Tâches"s, "\xF4\x8F\xBF\xBF"s,
                             "\xED\x9F\xBF"s, "\u0800"s, std::string(40, 'a') + "é" + std::string(40, 'b')})
        EXPECT_TRUE(isValidUtf8(text)) << text;
    for (const auto& text :
         {"\x80"s, "\xC0\x80"s, "\xC3"s, "\xE0\x9F\xBF"s, "\xED\xA0\x80"s, "\xF0\x8F\xBF\xBF"s, "\xF4\x90\x80\x80"s,
          "\xF5\x80\x80\x80"s, "\xE2\x82"s, "\xE2\x82."s, "\xF0\x9F\x8E"s, "\xF0..."s, "\xF0\x9F.."s, "\xF0\x9F\x8E."s,
          std::string(31, 'a') + "\xFF", std::string(16, 'a') + "\xC3" + std::string(16, 'a')})
        EXPECT_FALSE(isValidUtf8(text)) << text;
}

TEST(Text, LowersCaseAsUnicodeDoesWhateverTheLocale) {
    const std::pair<std::string, std::string> cases[] = {{"Pain de MIE", "pain de mie"},
                                                         {"ÉTÉ À L'ÎLE × 2 · ß", "été à l'île × 2 · ß"},
                                                         {"ŒUVRE ΣΊΣΥΦΟΣ", "œuvre σίσυφος"},
                                                         {"İ", "i̇"},
                                                         {"🎉 Ça", "🎉 ça"},
                                                         {"A\xC2", "a\xC2"},
                                                         {"A\xC3", "a\xC3"}};
    for (const auto& [text, lower] : cases) EXPECT_EQ(lowerCased(text), lower);
}

TEST(Text, TrimsUnicodeBlanksAndBreaksButNoLookAlikes) {
    EXPECT_EQ(trimmedOfWhiteSpace(" \t\u00A0\u2003\u3000été \u202F"), "été");
    EXPECT_EQ(trimmedOfWhiteSpace("a\r"), "a\r");
    EXPECT_EQ(trimmedOfWhiteSpaceAndLineBreaks("\r\n\u2028 à \u0085\v\f"), "à");
    EXPECT_EQ(trimmedOfWhiteSpaceAndLineBreaks("\u200Bà\uFEFF"), "\u200Bà\uFEFF"); // zero width is no white space
    EXPECT_EQ(trimmedOfWhiteSpaceAndLineBreaks(" \u2029\t"), "");
}

TEST(Text, CountsAndCutsWhatAReaderCallsCharacters) {
    EXPECT_EQ(characterCount("ab\r\n"), 3U);
    EXPECT_EQ(characterCount("e\u0301👨‍👩‍👧🇫🇷"), 3U);
    EXPECT_EQ(firstCharacters("e\u0301👨‍👩‍👧🇫🇷", 2), "e\u0301👨‍👩‍👧");
    EXPECT_EQ(firstCharacters("abc", 5), "abc");
    EXPECT_EQ(firstCharacters("été", 0), "");
}

TEST(Text, ReadsDigitsAndNothingElse) {
    EXPECT_EQ(parsedDigits("0042"), 42);
    for (const auto* text : {"", "+1", "-1", " 1", "1 ", "٣", "1.0", "9223372036854775808", "99999999999999999999"})
        EXPECT_FALSE(parsedDigits(text)) << text;
}

TEST(Hash, KnowsThePublishedVectorAndMakesRandomTextForAUrl) {
    // The verifier and the challenge of RFC 7636, appendix B.
    EXPECT_EQ(base64Url(sha256("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk")),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
    EXPECT_EQ(randomUrlSafe(1000).size(), 1334U);
    EXPECT_EQ(randomUrlSafe(1000).find_first_of("+/="), std::string::npos);
    EXPECT_NE(randomUrlSafe(16), randomUrlSafe(16));
    EXPECT_TRUE(constantTimeEqual("abc", "abc"));
    EXPECT_FALSE(constantTimeEqual("abc", "abd") || constantTimeEqual("abc", "ab"));
}

TEST(WallCalendar, SpeaksFrench) {
    EXPECT_EQ(wall::frenchLongDay(2025, 3, 4), "mardi 4 mars");
    EXPECT_EQ(wall::frenchLongDay(2025, 8, 15), "vendredi 15 août");
    EXPECT_EQ(wall::frenchLongDay(2025, 2, 30), "dimanche 2 mars");
    EXPECT_EQ(wall::weekday(2025, 3, 9), 0);
    EXPECT_EQ(wall::weekday(1960, 1, 2), 6);
}

TEST(WallCalendar, KnowsTheOddNightsOfTheWorld) {
    const struct {
        const char* zone;
        wall::Reading reading;
        Instant expected;
    } cases[] = {
        {"America/Sao_Paulo", {2018, 11, 4, 0, 0}, utc(2018, 11, 4, 3, 0)},      // no midnight: the day begins at 01:00
        {"America/Havana", {2025, 11, 2, 0, 30}, utc(2025, 11, 2, 4, 30)},       // two midnights: the first
        {"Australia/Lord_Howe", {2025, 10, 5, 2, 10}, utc(2025, 10, 4, 15, 30)}, // a change of half an hour
        {"Pacific/Apia", {2011, 12, 30, 12, 0}, utc(2011, 12, 30, 10, 0)},       // a day that never was
        {"Africa/Cairo", {2025, 7, 1, 9, 0}, utc(2025, 7, 1, 6, 0)},             // summer time, again since 2023
        {"America/Mexico_City", {2025, 7, 1, 9, 0}, utc(2025, 7, 1, 15, 0)},     // none any more since 2022
        {"EST5EDT,M3.2.0,M11.1.0", {2025, 7, 1, 9, 0}, utc(2025, 7, 1, 13, 0)},  // a rule in place of a name
        {"Europe/Paris", {2025, 7, 14, 9, 0}, utc(2025, 7, 14, 7, 0)},
        {"Europe/Paris", {2025, 3, 30, 2, 30}, utc(2025, 3, 30, 1, 0)},    // skipped: 03:00 is the next that exists
        {"Europe/Paris", {2025, 10, 26, 2, 30}, utc(2025, 10, 26, 0, 30)}, // repeated: the first
        {"Europe/Paris", {2025, 2, 30, 0, 0}, utc(2025, 3, 1, 23, 0)},
        {"Europe/Paris", {2025, 12, 31, 24, 0}, utc(2025, 12, 31, 23, 0)},
    };
    for (const auto& [zone, reading, expected] : cases) {
        goTo(zone);
        EXPECT_EQ(wall::instant(reading), expected) << zone;
    }
    EXPECT_EQ(wall::read(utc(2025, 10, 26, 1, 30)).hour, 2);
}

TEST(WallCalendar, FollowsTheUserToAnotherZone) {
    const tacla::testing::TemporaryFolder folder;
    const auto link = ":" + (folder / "localtime").string();
    std::filesystem::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", folder / "localtime");
    const bool twins = std::filesystem::exists("/usr/share/zoneinfo/posix"); // Debian 13 packs them apart
    const std::pair<std::string, const char*> names[] = {{"", "UTC"},
                                                         {":America/Lima", "America/Lima"},
                                                         {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
                                                         {link, "Asia/Tokyo"},
                                                         {"CET-1CEST,M3.5.0,M10.5.0/3", "Europe/Paris"},
                                                         {"posix/Asia/Tokyo", twins ? "Asia/Tokyo" : "UTC"},
                                                         {"/usr/share/zoneinfo/right/Asia/Tokyo", "Asia/Tokyo"},
                                                         {"Nulle/Part", "UTC"},
                                                         {"XYZ-3:17", "UTC"},
                                                         {"Europe/Paris", "Europe/Paris"}};
    for (const auto& [variable, name] : names) {
        goTo(variable);
        EXPECT_EQ(wall::zoneIdentifier(), name) << variable;
    }
    goTo("EST5EDT,M3.2.0,M11.1.0"); // which zone that is, the system may know
    EXPECT_FALSE(wall::zoneIdentifier().empty());
    ::unsetenv("TZ");
    EXPECT_TRUE(wall::refreshZone());
    EXPECT_FALSE(wall::zoneIdentifier().empty());
    goTo("Europe/Paris");
    EXPECT_FALSE(goTo("Europe/Paris"));
    EXPECT_TRUE(goTo("Asia/Tokyo"));
    EXPECT_EQ(wall::zoneIdentifier(), "Asia/Tokyo");
    EXPECT_EQ(wall::instant({2025, 3, 4, 9, 0}), utc(2025, 3, 4, 0, 0));
    EXPECT_EQ(wall::read(utc(2025, 3, 4, 0, 0)).hour, 9);
    EXPECT_TRUE(goTo("Europe/Paris"));
}
