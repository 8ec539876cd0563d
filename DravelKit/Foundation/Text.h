#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// UTF-8 text. Every function takes valid UTF-8 (see isValidUtf8) and gives valid UTF-8 back.
namespace dravel {

bool isValidUtf8(std::string_view text);

// Unicode default lower case, independent of the locale.
std::string lowerCased(std::string_view text);

// White space is Unicode Zs and TAB; line breaks are U+000A to U+000D, U+0085, U+2028 and U+2029.
std::string_view trimmedOfWhiteSpace(std::string_view text);
std::string_view trimmedOfWhiteSpaceAndLineBreaks(std::string_view text);
std::string withoutLineBreaks(std::string_view text); // a space for each run of them

// Characters are grapheme clusters: what a reader counts as one.
std::size_t characterCount(std::string_view text);
std::string_view firstCharacters(std::string_view text, std::size_t count);

// Pieces between the separators; as many as there are separators, plus one. "keepEmpty" false drops empty pieces.
std::vector<std::string_view> split(std::string_view text, std::string_view separator, bool keepEmpty = true);
std::string replacedAll(std::string_view text, std::string_view from, std::string_view to);

// ASCII digits only, no sign, no white space; none when empty or beyond 64 bits.
constexpr std::optional<std::int64_t> parsedDigits(std::string_view text) {
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_add_overflow(value, c - '0', &value))
            return std::nullopt;
    }
    return value;
}
// Appends the number, with zeros up to the width: "07", "-7".
void appendPadded(std::string& text, std::int64_t number, std::size_t width);

}
