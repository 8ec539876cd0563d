#include "Tacla/AppModel/GoogleCalendarService.h"

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"

#include <utility>

namespace tacla {

GoogleCalendarService::GoogleCalendarService(World world)
    : auth_(taclaGoogle(world.preferences), {.folders = std::move(world.folders),
                                             .endpoints = world.endpoints,
                                             .keyring = std::move(world.keyring),
                                             .openBrowser = std::move(world.openBrowser)}),
      sync_(auth_, world.preferences, world.endpoints.calendar) {}

CalendarService::Account GoogleCalendarService::account(std::stop_token stop) {
    switch (auth_.isSignedIn(stop)) {
    case dravel::GoogleAuth::Account::signedIn: return Account::signedIn;
    case dravel::GoogleAuth::Account::signedOut: return Account::signedOut;
    case dravel::GoogleAuth::Account::unreachable: return Account::unreachable;
    }
    return Account::unreachable;
}

void GoogleCalendarService::signIn(std::stop_token stop) { auth_.signIn(stop); }

void GoogleCalendarService::signOut(std::stop_token stop) { auth_.signOut(stop); }

void GoogleCalendarService::run(const Tasks& tasks, const std::map<std::string, std::string>& renamed,
                                std::stop_token stop) {
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
