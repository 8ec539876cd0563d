#pragma once

namespace tacla {

// What a text or an icon means; the pages turn it into one of the theme's colours.
enum class Mood { accent, plain, faint, success, warning, danger };

}
