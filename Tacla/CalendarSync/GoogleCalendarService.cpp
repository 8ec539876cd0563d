#include "Tacla/CalendarSync/GoogleCalendarService.h"

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"

#include <utility>

namespace tacla {

GoogleCalendarService::GoogleCalendarService(Ports ports)
    : auth_(taclaGoogle(ports.preferences), {.folders = std::move(ports.folders),
                                             .endpoints = ports.endpoints,
                                             .keyring = std::move(ports.keyring),
                                             .openBrowser = std::move(ports.openBrowser)}),
      sync_(auth_, ports.preferences, ports.endpoints.calendar) {}

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

void GoogleCalendarService::run(const Tasks& tasks, const RenamedKeys::Map& renamed, std::stop_token stop) {
    try {
        sync_.run(tasks, renamed, std::move(stop));
    } catch (const dravel::AuthError& error) {
        if (error.kind == dravel::AuthError::Kind::notSignedIn) throw NotSignedIn(error.what());
        throw;
    } catch (const dravel::FileError& error) { // the preferences; what() alone need not say which file
        throw std::runtime_error(error.path.string() + " : " + error.description());
    }
}

}
