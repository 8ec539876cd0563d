#pragma once

#include <stdexcept>
#include <string>

namespace tacla {

// Why a run ended early. what() is the description.
class SyncError : public std::runtime_error {
  public:
    enum class Kind {
        http,         // the service answered something else than was needed
        emptyFile,    // no task at all, while the calendar holds events
        calendarGone, // a calendar that we did not create, and must not create anew
    };

    static SyncError http(long status, const std::string& body);
    explicit SyncError(Kind kind, long status = 0, const std::string& body = "");

    std::string description() const { return what(); } // in French

    const Kind kind;
    const long status; // of http
};

}
