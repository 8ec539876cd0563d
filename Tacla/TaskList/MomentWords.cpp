#include "Tacla/TaskList/MomentWords.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/MomentPhrases.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace tacla {

namespace {

// A title cut into words and the signs behind them.
struct Title {
    std::string_view text;
    std::vector<std::string> words; // folded; what stands between apostrophes keeps one, and so is no phrase
    std::vector<TextRange> ranges;

    std::size_t size() const { return words.size(); }
    std::span<const std::string> from(std::size_t word) const { return std::span(words).subspan(word); }
    bool glued(std::size_t word) const { return word > 0 && ranges[word - 1].end == ranges[word].begin; }
    // "d'été"
    bool elidedOf(std::size_t word) const {
        const auto apostrophe = text.substr(std::min(ranges[word].begin + 1, text.size()));
        return words[word][0] == 'd' && (apostrophe.starts_with('\'') || apostrophe.starts_with("’"));
    }
    bool capital(std::size_t word) const { return std::isupper(static_cast<unsigned char>(text[ranges[word].begin])); }
};

bool isOneOf(std::string_view word, std::span<const std::string_view> words) {
    return std::ranges::find(words, word) != words.end();
}

bool startsWithDigit(std::string_view word) { return std::isdigit(static_cast<unsigned char>(word[0])) != 0; }

bool isDayNumber(std::string_view word) { return word == "1er" || dravel::parsedDigits(word); }

void addWord(Title& title, const dravel::FoldedText& folded, TextRange at) {
    title.words.push_back(folded.text.substr(at.begin, at.end - at.begin));
    title.ranges.push_back(folded.source(at));
}

// A word, then the signs at its end.
void addPiece(Title& title, const dravel::FoldedText& folded, TextRange piece) {
    const auto text = std::string_view(folded.text).substr(piece.begin, piece.end - piece.begin);
    const auto signs = piece.begin + std::max<std::size_t>(text.find_last_not_of(",;:.!") + 1, 1);
    addWord(title, folded, {piece.begin, signs});
    for (auto at = signs; at < piece.end;) {
        auto end = at + 1;
        while (folded.text[at] == '!' && end < piece.end && folded.text[end] == '!') ++end;
        addWord(title, folded, {at, end});
        at = end;
    }
}

Title cut(std::string_view text) {
    Title title{text, {}, {}};
    const auto folded = dravel::foldedWithSources(text);
    for (std::size_t begin = 0; begin < folded.text.size();) {
        const auto end = std::min(folded.text.find(' ', begin), folded.text.size());
        const auto first = title.size();
        if (end > begin) addPiece(title, folded, {begin, end});
        // What is dropped at either end was an apostrophe.
        const auto left = begin == 0 ? 0 : folded.sources[begin - 1].end;
        const auto right = end == folded.text.size() ? text.size() : folded.sources[end].begin;
        if (end > begin && folded.sources[begin].begin != left) title.words[first] += '\'';
        if (end > begin && folded.sources[end - 1].end != right) title.words.back() += '\'';
        begin = end + 1;
    }
    return title;
}

constexpr std::string_view separators[] = {",", ":", ";", "-", "–", "—"};
constexpr std::string_view separatorsBeforeEnd[] = {",", "-", "–", "—"}; // « Lire : Vendredi » names something
// Before a moment they make it part of what is said: « la réunion de mardi », « avant vendredi », « très urgent ».
constexpr std::string_view binding[] = {
    "a",    "apres",  "assez",   "au",     "aucun",  "aux",    "avant",  "avec",    "bon",     "bonne",    "ce",
    "cest", "cet",    "cette",   "chaque", "chez",   "comme",  "contre", "d",       "dans",    "de",       "depuis",
    "des",  "dici",   "du",      "duree",  "durant", "en",     "entre",  "environ", "est",     "et",       "hors",
    "ici",  "jusqua", "jusquau", "jusque", "joyeux", "la",     "le",     "les",     "mes",     "midi",     "moins",
    "mon",  "ni",     "non",     "notre",  "ou",     "par",    "partir", "pas",     "pendant", "peu",      "plus",
    "pour", "quun",   "sans",    "sauf",   "ses",    "si",     "sinon",  "sous",    "sur",     "tous",     "toutes",
    "tres", "trop",   "un",      "une",    "vers",   "veille", "votre",  "vs",      "y",       "lendemain"};
// Before a number they count something: « Note 12/12 ».
constexpr std::string_view numbering[] = {"chapitre", "code",  "episode", "etape",   "jour",   "film",
                                          "format",   "lot",   "note",    "page",    "partie", "photo",
                                          "ratio",    "score", "tome",    "version", "vision"};
// After a moment they make it part of a name: « Lundi de Pâques », « Mardi gras », « Demain ne meurt jamais ».
constexpr std::string_view continuing[] = {
    "a",        "ai",     "au",       "aux",       "blanc", "c",     "ce",    "ces",    "de",        "dernier",
    "derniere", "des",    "du",       "en",        "est",   "et",    "etait", "francs", "gras",      "h",
    "heures",   "jamais", "libre",    "meme",      "ne",    "ni",    "noir",  "ou",     "ouvrables", "ouvres",
    "passe",    "pile",   "prochain", "prochaine", "quand", "rouge", "saint", "sans",   "santa",     "sera",
    "soir",     "matin",  "midi",     "sur",       "tout",  "tous",  "vers",  "y"};

// As many phrases as follow each other, from that word on; their length counts the separators between them.
MomentPhrase phrasesAt(const Title& title, std::size_t begin, Day today) {
    MomentPhrase all;
    for (auto at = begin; at < title.size();) {
        const auto phrase = phraseAt(title.from(at), today);
        if (!phrase || !all.join(*phrase)) break;
        at += phrase->length;
        all.length = at - begin;
        if (at < title.size() && isOneOf(title.words[at], separators)) ++at;
    }
    return all;
}

bool tellsMoment(const MomentPhrase& phrase) { return phrase.day || phrase.clock; }

// Two moments side by side are a span or a choice: « de 14h à 16h », « lundi, mardi ».
bool momentEndsAt(const Title& title, std::size_t end, Day today) {
    constexpr std::size_t longest = 8;
    for (auto at = end - std::min(end, longest); at < end; ++at)
        if (const auto phrase = phraseAt(title.from(at), today);
            phrase && tellsMoment(*phrase) && at + phrase->length == end)
            return true;
    return false;
}

struct Told {
    MomentPhrase phrase;
    TextRange range;
};

bool mayEnd(const Title& title, std::size_t begin, std::size_t before, const MomentPhrase& phrase, Day today) {
    const auto& last = title.words[before - 1];
    if (title.glued(begin) || isOneOf(last, binding) || isOneOf(last, separators)) return false;
    if (startsWithDigit(title.words[begin]) && isOneOf(last, numbering)) return false;
    return !tellsMoment(phrase) || !momentEndsAt(title, before, today);
}

// The words at the end. Where a moment there belongs to the title, a priority behind it may still be meant.
std::optional<Told> toldAtEnd(const Title& title, Day today) {
    const auto end = title.size() - (title.size() > 0 && title.words.back() == "." ? 1 : 0);
    constexpr std::size_t longest = 16;
    bool momentRefused = false;
    for (auto begin = end - std::min(end, longest); begin < end; ++begin) {
        const auto phrase = phrasesAt(title, begin, today);
        if (phrase.length != end - begin || (momentRefused && tellsMoment(phrase))) continue;
        auto before = begin;
        while (before > 0 && isOneOf(title.words[before - 1], separatorsBeforeEnd)) --before;
        if (before == 0) return {};
        if (mayEnd(title, begin, before, phrase, today))
            return Told{phrase, {title.ranges[before - 1].end, title.ranges.back().end}};
        momentRefused = true;
    }
    return {};
}

bool mayBegin(const Title& title, const MomentPhrase& phrase, bool separated, std::size_t rest, Day today) {
    const auto& next = title.words[rest];
    const auto following = phraseAt(title.from(rest), today);
    if (tellsMoment(phrase) && following && tellsMoment(*following)) return false;
    if (separated) return true;
    if (isOneOf(next, continuing) || title.elidedOf(rest) || !std::isalnum(static_cast<unsigned char>(next[0])))
        return false;
    if (isWeekday(title.words[phrase.length - 1]))
        return !startsWithDigit(next) && (phrase.length > 1 || !title.capital(rest));    // « Mercredi Addams »
    return phrase.length != 2 || title.words[0] != "le" || !isDayNumber(title.words[1]); // « Le 12 rue Oberkampf »
}

std::optional<Told> toldAtBeginning(const Title& title, Day today) {
    const auto phrase = phrasesAt(title, 0, today);
    auto rest = phrase.length;
    while (rest < title.size() && isOneOf(title.words[rest], separators)) ++rest;
    if (phrase.length == 0 || rest == title.size()) return {};
    if (!mayBegin(title, phrase, rest > phrase.length, rest, today)) return {};
    return Told{phrase, {0, title.ranges[rest].begin}};
}

// A time alone is today's or, when it is past, tomorrow's; « ce soir » in the evening is a day without a time.
MomentWords resolved(const MomentPhrase& phrase, Day today, Clock now) {
    MomentWords told{.ranges = {}, .day = phrase.day, .clock = phrase.clock, .strong = phrase.strong};
    if (told.clock && !told.day) told.day = *told.clock < now ? today.plusDays(1) : today;
    if (phrase.part && !told.clock && (told.day != today || phrase.part->usual >= now)) told.clock = phrase.part->usual;
    return told;
}

std::string dayLabel(Day day, Day today) {
    if (day == today) return "aujourd'hui";
    if (day == today.plusDays(1)) return "demain";
    return day.longLabel() + (day.year == today.year ? "" : " " + std::to_string(day.year));
}

}

std::optional<MomentWords> momentWords(std::string_view text, Day today, Clock now) {
    const auto title = cut(text);
    const auto first = toldAtBeginning(title, today), last = toldAtEnd(title, today);
    if (!first && !last) return {};
    auto phrase = first ? first->phrase : last->phrase;
    if (first && last && (first->range.end >= last->range.begin || !phrase.join(last->phrase))) return {};
    auto told = resolved(phrase, today, now);
    for (const auto& part : {first, last})
        if (part) told.ranges.push_back(part->range);
    return told;
}

std::string withoutWords(std::string_view title, const MomentWords& told) {
    std::string kept(title);
    for (auto range = told.ranges.rbegin(); range != told.ranges.rend(); ++range)
        kept.erase(range->begin, range->end - range->begin);
    return std::string(dravel::trimmedOfWhiteSpace(kept));
}

std::string label(const MomentWords& told, Day today) {
    auto text = told.day ? dayLabel(*told.day, today) : std::string();
    if (told.clock) text += " " + told.clock->description();
    if (told.strong) text += text.empty() ? "prioritaire" : " · prioritaire";
    return text;
}

}
