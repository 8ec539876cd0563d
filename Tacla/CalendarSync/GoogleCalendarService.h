#pragma once

#include "DravelKit/GoogleAuth/GoogleAuth.h"
#include "Tacla/CalendarSync/CalendarMirror.h"
#include "Tacla/CalendarSync/CalendarSync.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tacla {

// The calendar of the running application: the user's Google account and the mirror, one of each.
class GoogleCalendarService final : public CalendarService {
  public:
    struct Ports {
        Preferences& preferences; // outlives the service
        dravel::GoogleFolders folders;
        std::filesystem::path locks; // the folder of the locks that all processes share
        dravel::GoogleEndpoints endpoints;
        std::shared_ptr<dravel::Keyring> keyring;
        std::function<void(const std::string& url)> openBrowser; // called in the background job of signIn
    };
    explicit GoogleCalendarService(Ports);

    Connection account(std::stop_token) override;
    void signIn(std::stop_token) override;
    void signOut(std::stop_token) override;
    Turn takeTurn(std::stop_token, const std::function<void()>& waits) override;
    std::string run(const Turn&, const Tasks&, const RenamedKeys::Map& renamed, std::stop_token) override;

  private:
    dravel::GoogleAuth auth_;
    CalendarSync sync_;
};

}
