#include "Tacla/CalendarSync/GoogleCalendarService.h"

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"

#include <utility>

namespace tacla {

namespace {

// What a call of the mirror throws, in the words of the port.
template <class Call>
auto translated(const Call& call) {
    try {
        return call();
    } catch (const dravel::AuthError& error) {
        if (error.kind == dravel::AuthError::Kind::notSignedIn)
            throw CalendarService::NotSignedIn(error.what(), hintOf(error));
        throw CalendarService::Failure(error.what(), hintOf(error), passes(error));
    } catch (const dravel::FileError& error) { // the preferences; what() alone need not say which file
        throw CalendarService::Failure(error.path.string() + " : " + error.description(), {}, false);
    } catch (const std::exception& error) {
        throw CalendarService::Failure(error.what(), hintOf(error), passes(error));
    }
}

// What the error of a file says alone need not name the file.
template <class Action>
void naming(Action action) {
    try {
        action();
    } catch (const dravel::FileError& error) {
        throw std::runtime_error(error.path.string() + " : " + error.description());
    }
}

}

GoogleCalendarService::GoogleCalendarService(Ports ports)
    : ports_(std::move(ports)), config_(taclaGoogle(ports_.preferences)),
      auth_(config_, {.folders = ports_.folders, .endpoints = ports_.endpoints, .keyring = ports_.keyring}),
      sync_(auth_, ports_.preferences, ports_.endpoints.calendar, ports_.locks) {}

Connection GoogleCalendarService::account(bool mayAskUser, std::stop_token stop) {
    switch (auth_.isSignedIn(mayAskUser ? dravel::Keyring::Ask::yes : dravel::Keyring::Ask::no, stop)) {
    case dravel::GoogleAuth::Account::signedIn: return Connection::signedIn;
    case dravel::GoogleAuth::Account::signedOut: return Connection::signedOut;
    case dravel::GoogleAuth::Account::unreachable: return Connection::unknown;
    }
    return Connection::unknown;
}

void GoogleCalendarService::signIn(const Tell& tell, std::stop_token stop) {
    const auto openBrowser = [&](const std::string& address) {
        tell({.kind = MirrorEvent::Kind::signInWaits, .message = address, .left = dravel::GoogleAuth::patience});
        ports_.openBrowser(address, [tell] { tell({.kind = MirrorEvent::Kind::browserMissing}); });
    };
    auth_.signIn(openBrowser, stop);
}

void GoogleCalendarService::signOut(std::stop_token stop) { auth_.signOut(stop); }

CalendarService::Turn GoogleCalendarService::takeTurn(std::stop_token stop, const std::function<void()>& waits) {
    return translated([&] { return sync_.takeTurn(stop, waits); });
}

std::string GoogleCalendarService::run(const Turn& turn, const Tasks& tasks, const RenamedKeys::Map& renamed,
                                       std::stop_token stop) {
    return translated([&] { return sync_.run(turn, tasks, renamed, stop).hint(); });
}

dravel::OAuthClient::Source GoogleCalendarService::client() const {
    return dravel::OAuthClient::source(config_, ports_.folders);
}

void GoogleCalendarService::useClient(const std::filesystem::path& downloaded) {
    naming([&] { dravel::OAuthClient::install(config_, ports_.folders, downloaded); });
}

}
