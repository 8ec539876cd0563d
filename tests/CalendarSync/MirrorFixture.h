#pragma once

#include "DravelKit/Net/HttpClient.h"
#include "Tacla/CalendarSync/CalendarSync.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/MemoryKeyring.h"
#include "tests/support/Outcome.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace tacla::testing {

using Json = nlohmann::json;

// scripts/google_stand_in.py in a process of its own, for as long as this object lives.
class GoogleStandIn {
  public:
    GoogleStandIn() {
        const TemporaryFolder folder;
        const auto said = (folder / "base").string();
        ::mkfifo(said.c_str(), 0600);
        input_ = ::popen(("exec /usr/bin/python3 " TACLA_GOOGLE_STAND_IN " --until-eof > " + said).c_str(), "we");
        std::ifstream output(said);
        if (!std::getline(output, base)) throw std::runtime_error("the stand-in did not start");
    }
    ~GoogleStandIn() { ::pclose(input_); }
    GoogleStandIn(const GoogleStandIn&) = delete;
    GoogleStandIn& operator=(const GoogleStandIn&) = delete;

    std::string base; // "http://127.0.0.1:41234"

    Json control(const Json& order) const { return Json::parse(ask("POST", "/control", order.dump())); }
    Json state(const std::string& part) const { return Json::parse(ask("GET", "/control/state?" + part)); }
    std::string clientFile() const { return ask("GET", "/control/client"); }

  private:
    std::string ask(const std::string& method, const std::string& path, const std::string& body = "") const {
        return dravel::HttpClient().send({.method = method, .url = base + path, .body = body}).body;
    }

    std::FILE* input_; // it ends when its input does
};

// A signed-in user with a calendar of their own, a clock that moves only by waiting, and the stand-in for Google.
struct MirrorFixture {
    GoogleStandIn google;
    TemporaryFolder home;
    std::shared_ptr<MemoryKeyring> keyring = std::make_shared<MemoryKeyring>();
    Preferences preferences{home / "preferences.json", home / "locks"};
    dravel::GoogleEndpoints endpoints = dravel::GoogleEndpoints::onThisMachine(google.base, googleBaseVariable);
    dravel::GoogleAuth auth;

    Pace::Moment now{};
    std::vector<Pace::Wait> waits;
    CalendarSync::Time time{[this] { return now; },
                            [this](Pace::Wait wait, std::stop_token) {
                                now += wait;
                                waits.push_back(wait);
                            }};
    CalendarSync sync{auth, preferences, endpoints.calendar, home / "locks", time};

    MirrorFixture()
        : auth(taclaGoogle(preferences),
               {.folders = {home.path(), home.path()}, .endpoints = endpoints, .keyring = keyring}) {
        std::filesystem::create_directories(home / "Tacla");
        writeBytes(home / "Tacla/client.json", google.clientFile());
        const auto grant = google.control({{"grant", "https://www.googleapis.com/auth/calendar.app.created"}});
        keyring->items["fr.dravel.Tacla.google"] = grant["refresh_token"];
    }

    // From now on: the fault at the n-th request, or none any more.
    void disturb(Json fault, std::size_t at = 1, const char* on = "calendar") const {
        fault.update({{"on", on}, {"at", at}});
        google.control({{"faults", {fault}}});
    }
    void calm() const { google.control({{"faults", Json::array()}}); }

    using Keys = std::map<std::string, std::string>;

    // "+3 ~1 -0", or what went wrong.
    std::string run(const std::string& text, const Keys& renamed = {}) { return run(sync, text, renamed); }

    static std::string run(CalendarSync& mirror, const std::string& text, const Keys& renamed) {
        return outcome([&] {
            const auto done = mirror.run(mirror.takeTurn(), TaskFile::parse(text), renamed);
            return "+" + std::to_string(done.created) + " ~" + std::to_string(done.updated) + " -" +
                   std::to_string(done.deleted) + done.hint();
        });
    }

    // The methods of the calendar requests since the last call, in order.
    std::vector<std::string> requests() {
        std::vector<std::string> lines;
        for (const Json& entry : google.state("log")) {
            if (entry["path"] != "/token") lines.push_back(entry["method"]);
        }
        google.control({{"clear_log", true}});
        return lines;
    }

    Json calendar() { return google.state("calendars")[preferences.calendarID().value_or("")]; }

    // What the user sees of the events, by title.
    std::map<std::string, Json> shown() {
        std::map<std::string, Json> events;
        const Json all = calendar();
        for (const Json& event : all["events"]) {
            if (event["status"] != "cancelled") events[event["summary"]] = event;
        }
        return events;
    }
};

}
