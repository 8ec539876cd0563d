#include "DravelKit/Foundation/Text.h"
#include "Tacla/Preferences/Preferences.h"

#include <nlohmann/json.hpp>

#include <cstdlib>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

}

// What can be read can be changed, written and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!dravel::isValidUtf8(text)) return 0;
    const auto settings = tacla::parsedSettings(text);
    if (!settings) return 0;
    auto changed = *settings;
    changed["calendarSync"] = true;
    require(tacla::parsedSettings(changed.dump(2)) == changed);
    require(tacla::parsedSettings(settings->dump()) == settings);
    return 0;
}
