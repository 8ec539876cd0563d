#pragma once

#include "DravelKit/GoogleAuth/GoogleAuth.h"
#include "DravelKit/Net/Url.h"
#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/MemoryKeyring.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <list>

namespace tacla::testing {

// An account whose token endpoint, keyring, browser and clocks are the test's.
struct AccountWorld : ::testing::Test {
    static constexpr auto key = "fr.dravel.Essai.google";

    TemporaryFolder folder;
    std::shared_ptr<MemoryKeyring> keyring = std::make_shared<MemoryKeyring>();
    dravel::Instant now{std::chrono::hours(24 * 20'000)};
    IdleClock idle;
    std::unique_ptr<LoopbackServer> server;
    std::unique_ptr<dravel::GoogleAuth> auth;
    std::function<std::string(const std::map<std::string, std::string>&)> user; // authorization query to callback query
    std::string opened;                                                         // the address shown in the browser
    std::list<Visit> browser;

    AccountWorld() {
        std::filesystem::create_directories(folder / "Essai");
        writeBytes(folder / "Essai/client.json",
                   R"({"installed": {"client_id": "client", "client_secret": "secret-client"}})");
    }

    // Google's token endpoint gives these answers; a new account object each time.
    void google(std::vector<LoopbackServer::Answer> answers) {
        server = std::make_unique<LoopbackServer>(std::move(answers));
        auth = std::make_unique<dravel::GoogleAuth>(
            essai(),
            dravel::GoogleEnvironment{.folders = {.data = folder.path(), .resources = folder / "share"},
                                      .endpoints = dravel::GoogleEndpoints::onThisMachine(server->base(), "test"),
                                      .keyring = keyring,
                                      .openBrowser = [this](const std::string& url) { browse(url); },
                                      .now = [this] { return now; },
                                      .receiverClock = idle.reader()});
    }

    void browse(const std::string& url) {
        opened = url;
        std::map<std::string, std::string> query;
        for (auto& [name, value] : dravel::decodedItems(dravel::Url::parse(url).value().query)) query[name] = value;
        const auto port = dravel::Url::parse(query.at("redirect_uri")).value().port;
        const auto back = user(query);
        if (back.empty()) return; // the user walks away
        browser.emplace_back(static_cast<std::uint16_t>(std::stoi(port)),
                             "GET /?" + back + " HTTP/1.1\r\nHost: 127.0.0.1:" + port + "\r\n\r\n");
    }

    // "" when it went well, else the French reason.
    template <class Action>
    static std::string outcome(Action action) {
        try {
            action();
            return "";
        } catch (const std::exception& error) {
            return error.what();
        }
    }
    std::string signIn() {
        return outcome([this] { auth->signIn(); });
    }
    std::string accessToken() {
        std::string token;
        const auto failure = outcome([&] { token = auth->validAccessToken().reveal(); });
        return failure.empty() ? token : failure;
    }
    std::map<std::string, std::string> form(std::size_t request) const {
        std::map<std::string, std::string> fields;
        for (auto& [name, value] : dravel::decodedItems(server->requests().at(request).body)) fields[name] = value;
        return fields;
    }
};

}
