#include "Tacla/MainWindow/Section.h"

namespace tacla {

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

std::string_view symbol(Section section) {
    switch (section) {
    case Section::today: return "sun";
    case Section::late: return "exclamation-circle";
    case Section::upcoming: return "calendar3";
    case Section::done: return "check-circle";
    case Section::settings: return "gear";
    }
    return {};
}

std::optional<Section> sectionNamed(std::string_view name) {
    for (const auto section : sections)
        if (rawValue(section) == name) return section;
    return std::nullopt;
}

}
