#include "Tacla/MainWindow/QtValues.h"

namespace tacla {

namespace Theme = dravel::Theme;
using dravel::TagLook;

const Theme::Tone& toneOf(Mood mood) {
    switch (mood) {
    case Mood::accent: return Theme::accent;
    case Mood::plain: return Theme::textSecondary;
    case Mood::faint: return Theme::textTertiary;
    case Mood::success: return Theme::successText;
    case Mood::warning: return Theme::warningText;
    case Mood::danger: return Theme::dangerText;
    }
    return Theme::text;
}

TagLook tagLookOf(Mood mood) {
    switch (mood) {
    case Mood::success: return TagLook::success();
    case Mood::warning: return TagLook::warning();
    case Mood::danger: return TagLook::danger();
    case Mood::accent:
    case Mood::plain:
    case Mood::faint: break;
    }
    return TagLook::plain();
}

}
