#include "Tacla/Preferences/Preferences.h"
#include "tests/fuzz/Fuzzer.h"

#include <nlohmann/json.hpp>

// What can be read can be changed, written and read again.
void fuzz(std::string_view text) {
    const auto settings = dravel::isValidUtf8(text) ? tacla::parsedSettings(text) : std::nullopt;
    if (!settings) return;
    auto changed = *settings;
    changed["calendarSync"] = true;
    require(tacla::parsedSettings(changed.dump(2)) == changed);
    require(tacla::parsedSettings(settings->dump()) == settings);
}
