#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

// JSON of somebody else's making: whatever it is, reading it never throws.
namespace dravel {

// The text as an object; none when it is anything else.
inline std::optional<nlohmann::json> jsonObject(std::string_view text) {
    auto value = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!value.is_object()) return std::nullopt;
    return value;
}

// The member of that name; null when there is none, or when the value is no object.
inline const nlohmann::json& jsonMember(const nlohmann::json& value, const char* name) {
    static const nlohmann::json none;
    const auto found = value.find(name);
    return found == value.end() ? none : *found;
}

inline std::optional<std::string> jsonString(const nlohmann::json& value, const char* name) {
    const auto& member = jsonMember(value, name);
    return member.is_string() ? std::optional(member.get<std::string>()) : std::nullopt;
}

}
