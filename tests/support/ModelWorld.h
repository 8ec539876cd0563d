#pragma once

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/Reminders/ReminderPlan.h"
#include "tests/support/RecordedNotifications.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualLoop.h"

#include <gtest/gtest.h>

namespace tacla::testing {

using namespace std::chrono_literals;
using Happened = MirrorEvent::Kind;

Instant moment(std::string_view text);                                                // "2025-03-04 14:30" on the wall
std::vector<std::string> linesOf(std::string_view text, std::string_view end = "\n"); // none behind the last end

// An account and a calendar that answer as the test says.
class RecordedCalendar final : public CalendarService {
  public:
    Connection present = Connection::signedIn;
    std::optional<std::string> failure;                   // of the next calls
    bool passing = false;                                 // run meets a trouble that passes
    bool stopped = false;                                 // whether the last run was
    std::vector<std::map<std::string, std::string>> runs; // the renamed keys that each sync was given
    std::vector<std::string> sent;                        // the first task of each

    std::function<void(const Tell&, const std::stop_token&)> duringSignIn;
    dravel::OAuthClient::Source clientFile = dravel::OAuthClient::Source::own;

    Connection account(bool, std::stop_token) override { return present; }
    void signIn(const Tell& tell, std::stop_token stop) override {
        if (duringSignIn) duringSignIn(tell, stop);
        failIfTold();
    }
    dravel::OAuthClient::Source client() const override { return clientFile; }
    void useClient(const std::filesystem::path& downloaded) override {
        failIfTold();
        clientFile = downloaded.extension() == ".json" ? dravel::OAuthClient::Source::own : clientFile;
    }
    void signOut(std::stop_token) override { failIfTold(); }
    Turn takeTurn(std::stop_token, const std::function<void()>&) override { return {}; }
    std::string run(const Turn&, const Tasks& tasks, const std::map<std::string, std::string>& renamed,
                    std::stop_token stop) override {
        runs.push_back(renamed);
        sent.push_back(tasks.empty() ? "" : tasks[0].title + (tasks[0].done ? ": done" : ""));
        stopped = stop.stop_requested();
        if (passing) throw Failure("hors ligne", "attendre", true);
        failIfTold();
        return {};
    }

  private:
    void failIfTold() const {
        if (failure) throw std::runtime_error(*failure);
    }
};

class RecordedLoginItem final : public LoginItem {
  public:
    bool enabled = false;
    std::optional<dravel::FileError> failure;

    bool switchedOff = false, unasked = true;

    Status status() const override {
        return switchedOff ? Status::switchedOff : enabled ? Status::enabled : Status::absent;
    }
    bool mayComeUnasked() const override { return unasked; }
    void enable() override { set(true); }
    void disable() override { set(false); }

  private:
    void set(bool on) {
        if (failure) throw *failure;
        enabled = on;
    }
};

// The living model in a world of its own, on virtual time. A member that a test changes before `start` is in effect
// then.
struct ModelWorld {
    explicit ModelWorld(std::string_view now, std::string_view tasks);

    TemporaryFolder folder;
    std::filesystem::path file;
    VirtualLoop loop;
    VirtualBackground background{loop}, disk{loop};
    dravel::UserFolders folders;
    Preferences preferences;
    RecordedNotifications notifications{loop};
    RecordedCalendar calendar;
    RecordedLoginItem loginItem;
    AppModel model;
    int told = 0; // how often the observers were told
    dravel::Connection observer;

    void start();
    void restart(const std::function<void()>& meanwhile = {}); // after a kill: nothing was brought to its end
    void save(std::string_view text) const; // as an editor does; the modification time differs for sure
    std::string text() const { return readBytes(file); }
    const ModelState& state() const { return model.state(); }
    LiveDocument& list() { return model.list(); }
    void mirror(MirrorEvent::Kind kind, bool on = false) { model.mirror().tell({.kind = kind, .on = on}); }
    TaskItem task(std::string_view title) const;

  private:
    AppModel::Ports ports();
};

struct LivingWorld : ModelWorld {
    LivingWorld(std::string_view now, std::string_view tasks) : ModelWorld(now, tasks) { start(); }
};

// One that is mirrored, whose first sync is over.
struct MirroredWorld : LivingWorld {
    explicit MirroredWorld(std::string_view tasks) : LivingWorld("2025-03-04 08:00", tasks) {
        mirror(Happened::switchAsked, true);
        loop.advance(1s);
        told = 0;
        calendar.runs.clear();
        calendar.sent.clear();
    }
};

}
