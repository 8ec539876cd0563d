#pragma once

#include "DravelKit/GoogleAuth/GoogleAuth.h"
#include "Tacla/AppModel/CalendarService.h"
#include "Tacla/CalendarSync/CalendarSync.h"

#include <functional>
#include <memory>

namespace tacla {

// The calendar of the running application: the user's Google account and the mirror, one of each.
class GoogleCalendarService final : public CalendarService {
  public:
    struct World {
        Preferences& preferences; // outlives the service
        dravel::GoogleFolders folders;
        dravel::GoogleEndpoints endpoints;
        std::shared_ptr<dravel::Keyring> keyring;
        std::function<void(const std::string& url)> openBrowser; // called in the background job of signIn
    };
    explicit GoogleCalendarService(World);

    Account account(std::stop_token) override;
    void signIn(std::stop_token) override;
    void signOut(std::stop_token) override;
    void run(const Tasks&, const std::map<std::string, std::string>& renamed, std::stop_token) override;

  private:
    dravel::GoogleAuth auth_;
    CalendarSync sync_;
};

}
