#pragma once

namespace tacla {

// Tells screen readers what rows and their cards are. Once, before the first of them.
void installRowAccessibility();

}
