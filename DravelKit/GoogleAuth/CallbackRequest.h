#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace dravel {

// What the receiver needs of an HTTP request.
struct CallbackRequest {
    std::map<std::string, std::string> query; // the first value of each name
    bool isForUs = true;                      // no Host header, or one that names this machine

    // The browser came back from Google, with a code or a reason why there is none.
    bool isCallback() const { return isForUs && (query.contains("code") || query.contains("error")); }

    // None without a whole request line.
    static std::optional<CallbackRequest> parse(std::string_view bytes);

    // The head has come in whole: nothing more is worth waiting for.
    static bool isComplete(std::string_view bytes);
};

}
