#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/Hash.h"

#include <gtest/gtest.h>

using namespace dravel;
using namespace std::string_literals;

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
