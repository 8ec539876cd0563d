#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Text as one looks for it: "L’Été" and "l'ete" are the same. Takes valid UTF-8 and gives valid UTF-8 back.
namespace dravel {

// Bytes, from the first to the one behind the last.
struct TextRange {
    std::size_t begin, end;

    bool operator==(const TextRange&) const = default;
};

// Lower case, without accents and apostrophes; every blank is a space, every hyphen "-", "œ" is "oe".
std::string folded(std::string_view text);

struct FoldedText {
    std::string text;
    std::vector<TextRange> sources; // of each of its bytes: the character of the original, with its accents

    TextRange source(TextRange range) const { return {sources[range.begin].begin, sources[range.end - 1].end}; }
};
FoldedText foldedWithSources(std::string_view text);

}
