#pragma once

#include "DravelKit/DravelUI/StatusTag.h"
#include "Tacla/MainWindow/Mood.h"

namespace tacla {

const dravel::Theme::Tone& toneOf(Mood);
dravel::TagLook tagLookOf(Mood);

}
