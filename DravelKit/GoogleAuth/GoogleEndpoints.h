#pragma once

#include <optional>
#include <string>

namespace dravel {

// The addresses of Google's services.
struct GoogleEndpoints {
    std::string authorization; // where the browser is sent
    std::string token;
    std::string calendar; // ".../calendar/v3", no "/" at the end

    // Google's published addresses.
    static GoogleEndpoints published();

    // All of them on one server of this machine, for tests and emulators. Throws AuthError (badEndpoints) when the
    // host is anything but 127.0.0.1 or [::1]; `setting` names where the address came from.
    static GoogleEndpoints onThisMachine(const std::string& base, const std::string& setting);

    // onThisMachine when the environment has the variable (even empty), else published.
    static GoogleEndpoints fromEnvironment(const char* variable);
};

}
