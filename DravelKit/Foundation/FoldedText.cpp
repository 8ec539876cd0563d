#include "DravelKit/Foundation/FoldedText.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <array>

namespace dravel {

namespace {

bool isApostrophe(UChar32 c) {
    return c == '\'' || c == '`' || c == 0xB4 || c == 0x2BC || c == 0x2018 || c == 0x2019 || c == 0x2032;
}

std::string decomposed(UChar32 c) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString pieces;
    if (!icu::Normalizer2::getNFDInstance(status)->getDecomposition(c, pieces)) pieces = c;
    icu::UnicodeString kept;
    for (std::int32_t i = 0; i < pieces.length(); i = pieces.moveIndex32(i, 1))
        if (const auto piece = pieces.char32At(i); u_charType(piece) != U_NON_SPACING_MARK) kept += piece;
    std::string text;
    return kept.foldCase().toUTF8String(text);
}

// What one character becomes; nothing for an apostrophe and for a lone accent.
std::string foldedCharacter(UChar32 c) {
    if (isApostrophe(c)) return {};
    if (c == '\t' || u_charType(c) == U_SPACE_SEPARATOR) return " ";
    if (c == 0x2010 || c == 0x2011) return "-";
    if (c == 0x152 || c == 0x153) return "oe";
    if (c == 0xC6 || c == 0xE6) return "ae";
    return decomposed(c);
}

constexpr UChar32 latinEnd = 0x180; // all that French is written with, and most of Europe

using LatinTable = std::array<std::string, latinEnd>;

const LatinTable& latinTable() {
    static const auto table = [] {
        LatinTable made;
        for (UChar32 c = 0; c < latinEnd; ++c) made[static_cast<std::size_t>(c)] = foldedCharacter(c);
        return made;
    }();
    return table;
}

template <class Action>
void forEachFolded(std::string_view text, Action action) {
    const auto& latin = latinTable();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end) {
        UChar32 c;
        U8_NEXT(bytes, end, text.size(), c);
        if (c >= 0 && c < latinEnd)
            action(c, std::string_view(latin[static_cast<std::size_t>(c)]), TextRange{begin, end});
        else
            action(c, std::string_view(foldedCharacter(c)), TextRange{begin, end});
    }
}

}

std::string folded(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    forEachFolded(text, [&](UChar32, std::string_view piece, TextRange) { result += piece; });
    return result;
}

FoldedText foldedWithSources(std::string_view text) {
    FoldedText result;
    result.text.reserve(text.size());
    result.sources.reserve(text.size());
    forEachFolded(text, [&](UChar32 c, std::string_view piece, TextRange source) {
        result.text += piece;
        for (std::size_t i = 0; i < piece.size(); ++i) result.sources.push_back(source);
        if (piece.empty() && !isApostrophe(c) && !result.sources.empty()) result.sources.back().end = source.end;
    });
    return result;
}

}
