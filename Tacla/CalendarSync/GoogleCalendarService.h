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
        // Called in the background job of signIn; `failed` may be called by any thread, at once or later.
        std::function<void(const std::string& url, std::function<void()> failed)> openBrowser;
    };
    explicit GoogleCalendarService(Ports);

    Connection account(bool mayAskUser, std::stop_token) override;
    void signIn(const Tell&, std::stop_token) override;
    void signOut(std::stop_token) override;
    Turn takeTurn(std::stop_token, const std::function<void()>& waits) override;
    std::string run(const Turn&, const Tasks&, const RenamedKeys::Map& renamed, std::stop_token) override;

    dravel::OAuthClient::Source client() const override;
    void useClient(const std::filesystem::path& downloaded) override;

  private:
    const Ports ports_;
    const dravel::GoogleConfig config_;
    dravel::GoogleAuth auth_;
    CalendarSync sync_;
};

}
