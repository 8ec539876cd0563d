#include "Tacla/MainWindow/Section.h"

#include "DravelKit/DravelUI/Symbols.h"

namespace tacla {

using dravel::Symbol;

std::string_view rawValue(Section section) {
    switch (section) {
    case Section::today: return "today";
    case Section::late: return "late";
    case Section::upcoming: return "upcoming";
    case Section::done: return "done";
    case Section::settings: return "settings";
    }
    return {};
}

std::string_view title(Section section) {
    switch (section) {
    case Section::today: return "Aujourd'hui";
    case Section::late: return "En retard";
    case Section::upcoming: return "À venir";
    case Section::done: return "Faites";
    case Section::settings: return "Réglages";
    }
    return {};
}

Symbol symbol(Section section) {
    switch (section) {
    case Section::today: return Symbol::Sun;
    case Section::late: return Symbol::ExclamationCircle;
    case Section::upcoming: return Symbol::Calendar3;
    case Section::done: return Symbol::CheckCircle;
    case Section::settings: return Symbol::Gear;
    }
    return Symbol::Sun;
}

std::optional<Section> sectionNamed(std::string_view name) {
    for (const auto section : sections)
        if (rawValue(section) == name) return section;
    return std::nullopt;
}

}
