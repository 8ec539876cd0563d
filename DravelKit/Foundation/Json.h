#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

// JSON of somebody else's making: whatever it is, reading it never throws.
namespace dravel {

// Nothing that is sent to us nests as deep; a text of brackets alone would take eighty times its size.
inline constexpr int deepestJson = 64;

inline bool nestsTooDeep(std::string_view text) {
    int depth = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted && c == '\\') ++i;
        if (c == '"') quoted = !quoted;
        if (quoted) continue;
        if ((c == '[' || c == '{') && ++depth > deepestJson) return true;
        if (c == ']' || c == '}') --depth;
    }
    return false;
}

// The text as an object; none when it is anything else.
inline std::optional<nlohmann::json> jsonObject(std::string_view text) {
    if (nestsTooDeep(text)) return std::nullopt;
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

inline std::optional<bool> jsonFlag(const nlohmann::json& value, const char* name) {
    const auto& member = jsonMember(value, name);
    return member.is_boolean() ? std::optional(member.get<bool>()) : std::nullopt;
}

}
