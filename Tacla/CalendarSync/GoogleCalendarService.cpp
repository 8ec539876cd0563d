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

}

GoogleCalendarService::GoogleCalendarService(Ports ports)
    : auth_(taclaGoogle(ports.preferences), {.folders = std::move(ports.folders),
                                             .endpoints = ports.endpoints,
                                             .keyring = std::move(ports.keyring),
                                             .openBrowser = std::move(ports.openBrowser)}),
      sync_(auth_, ports.preferences, ports.endpoints.calendar, ports.locks) {}

Connection GoogleCalendarService::account(std::stop_token stop) {
    switch (auth_.isSignedIn(stop)) {
    case dravel::GoogleAuth::Account::signedIn: return Connection::signedIn;
    case dravel::GoogleAuth::Account::signedOut: return Connection::signedOut;
    case dravel::GoogleAuth::Account::unreachable: return Connection::unknown;
    }
    return Connection::unknown;
}

void GoogleCalendarService::signIn(std::stop_token stop) { auth_.signIn(stop); }

void GoogleCalendarService::signOut(std::stop_token stop) { auth_.signOut(stop); }

CalendarService::Turn GoogleCalendarService::takeTurn(std::stop_token stop, const std::function<void()>& waits) {
    return translated([&] { return sync_.takeTurn(stop, waits); });
}

std::string GoogleCalendarService::run(const Turn& turn, const Tasks& tasks, const RenamedKeys::Map& renamed,
                                       std::stop_token stop) {
    return translated([&] { return sync_.run(turn, tasks, renamed, stop).hint(); });
}

}
