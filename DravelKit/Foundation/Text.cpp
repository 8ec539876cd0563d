#include "DravelKit/Foundation/Text.h"

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <bit>
#include <charconv>
#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

namespace dravel {

namespace {

// How many ASCII bytes stand at the beginning.
std::size_t asciiLength(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t length = 0;
    for (; length + 8 <= text.size(); length += 8) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + length, sizeof word);
        if (word &= highBits; word == 0) continue;
        if constexpr (std::endian::native == std::endian::little)
            return length + static_cast<std::size_t>(std::countr_zero(word)) / 8;
        return length + static_cast<std::size_t>(std::countl_zero(word)) / 8;
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) ++length;
    return length;
}

bool isContinuation(unsigned char byte) { return (byte & 0xC0U) == 0x80U; }

// The length of the well-formed sequence that starts with a byte of 0x80 or more, 0 when there is none (Unicode, table
// 3-7).
std::size_t sequenceLength(const unsigned char* at, std::size_t left) {
    const unsigned char lead = at[0];
    if (lead >= 0xC2 && lead <= 0xDF) return left >= 2 && isContinuation(at[1]) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (left < 3 || !isContinuation(at[1]) || !isContinuation(at[2])) return 0;
        const bool overlong = lead == 0xE0 && at[1] < 0xA0;
        const bool surrogate = lead == 0xED && at[1] > 0x9F;
        return overlong || surrogate ? 0 : 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (left < 4 || !isContinuation(at[1]) || !isContinuation(at[2]) || !isContinuation(at[3])) return 0;
        const bool overlong = lead == 0xF0 && at[1] < 0x90;
        const bool tooLarge = lead == 0xF4 && at[1] > 0x8F;
        return overlong || tooLarge ? 0 : 4;
    }
    return 0;
}

// Lower-cases ASCII and Latin-1 letters, which map one to one; none when the text holds anything else that could.
std::optional<std::string> lowerCasedLatin(std::string_view text) {
    std::string lower(text);
    for (std::size_t i = 0; i < lower.size(); ++i) {
        const auto byte = static_cast<unsigned char>(lower[i]);
        if (byte < 0x80) {
            if (byte >= 'A' && byte <= 'Z') lower[i] = static_cast<char>(byte + 0x20);
        } else if (byte == 0xC2 && i + 1 < lower.size()) {
            ++i; // U+0080 to U+00BF have no case
        } else if (byte == 0xC3 && i + 1 < lower.size()) {
            const auto next = static_cast<unsigned char>(lower[++i]);
            if (next <= 0x9E && next != 0x97) lower[i] = static_cast<char>(next + 0x20); // À to Þ, not ×
        } else {
            return std::nullopt;
        }
    }
    return lower;
}

// The first bytes of everything that is white space or a line break beyond ASCII: all else needs no second look.
bool mayBeBlank(std::uint8_t byte) { return byte <= ' ' || byte == 0xC2 || (byte >= 0xE1 && byte <= 0xE3); }

bool isWhiteSpace(UChar32 c) { return c == '\t' || c == ' ' || (c >= 0x80 && u_charType(c) == U_SPACE_SEPARATOR); }
bool isLineBreak(UChar32 c) { return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029; }

template <class Predicate>
std::string_view trimmedOf(std::string_view text, Predicate isTrimmed) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::size_t begin = 0, end = text.size();
    while (begin < end && mayBeBlank(bytes[begin])) {
        std::size_t next = begin;
        UChar32 c;
        U8_NEXT(bytes, next, end, c);
        if (!isTrimmed(c)) break;
        begin = next;
    }
    while (end > begin) {
        auto previous = end - 1;
        while (previous > begin && U8_IS_TRAIL(bytes[previous])) --previous;
        if (!mayBeBlank(bytes[previous])) break;
        auto next = previous;
        UChar32 c;
        U8_NEXT(bytes, next, end, c);
        if (!isTrimmed(c)) break;
        end = previous;
    }
    return text.substr(begin, end - begin);
}

bool isAscii(std::string_view text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80 || c == '\r') return false; // CR LF is one character
    return true;
}

// Calls back with the end of each character until that returns false.
template <class Action>
void forEachCharacterEnd(std::string_view text, Action action) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText* utf8 = utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status);
    if (U_SUCCESS(status)) characters->setText(utf8, status);
    if (U_FAILURE(status)) {
        utext_close(utf8);
        throw std::runtime_error(u_errorName(status));
    }
    for (auto end = characters->next(); end != icu::BreakIterator::DONE; end = characters->next())
        if (!action(static_cast<std::size_t>(end))) break;
    utext_close(utf8);
}

}

bool isValidUtf8(std::string_view text) {
    for (text.remove_prefix(asciiLength(text)); !text.empty(); text.remove_prefix(asciiLength(text))) {
        const auto length = sequenceLength(reinterpret_cast<const unsigned char*>(text.data()), text.size());
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string lowerCased(std::string_view text) {
    if (auto latin = lowerCasedLatin(text)) return *std::move(latin);
    std::string lower;
    icu::StringByteSink<std::string> sink(&lower);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, {text.data(), static_cast<std::int32_t>(text.size())}, sink, nullptr, status);
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    return lower;
}

std::string_view trimmedOfWhiteSpace(std::string_view text) { return trimmedOf(text, isWhiteSpace); }

std::string_view trimmedOfWhiteSpaceAndLineBreaks(std::string_view text) {
    return trimmedOf(text, [](UChar32 c) { return isWhiteSpace(c) || isLineBreak(c); });
}

std::string withoutLineBreaks(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::string result;
    bool inBreak = false;
    for (std::size_t begin = 0, next = 0; next < text.size(); begin = next) {
        UChar32 c;
        U8_NEXT(bytes, next, text.size(), c);
        const bool before = std::exchange(inBreak, isLineBreak(c));
        if (!inBreak) result.append(text, begin, next - begin);
        if (inBreak && !before) result += ' ';
    }
    return result;
}

std::size_t characterCount(std::string_view text) {
    if (isAscii(text)) return text.size();
    std::size_t count = 0;
    forEachCharacterEnd(text, [&](std::size_t) { return ++count, true; });
    return count;
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    if (count == 0) return text.substr(0, 0);
    if (isAscii(text)) return text.substr(0, count);
    std::size_t end = 0, seen = 0;
    forEachCharacterEnd(text, [&](std::size_t characterEnd) {
        end = characterEnd;
        return ++seen < count;
    });
    return text.substr(0, end);
}

std::vector<std::string_view> split(std::string_view text, std::string_view separator, bool keepEmpty) {
    std::vector<std::string_view> pieces;
    for (std::size_t begin = 0;;) {
        const auto end = text.find(separator, begin);
        const auto piece = text.substr(begin, end == text.npos ? text.npos : end - begin);
        if (keepEmpty || !piece.empty()) pieces.push_back(piece);
        if (end == text.npos) return pieces;
        begin = end + separator.size();
    }
}

std::string replacedAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string result;
    const auto pieces = split(text, from);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0) result += to;
        result += pieces[i];
    }
    return result;
}

void appendPadded(std::string& text, std::int64_t number, std::size_t width) {
    char digits[20]; // the longest, a sign included
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    const auto* begin = digits;
    if (number < 0) text += *begin++;
    const auto length = static_cast<std::size_t>(end - digits);
    if (length < width) text.append(width - length, '0');
    text.append(begin, static_cast<std::size_t>(end - begin));
}

}
