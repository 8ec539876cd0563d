#pragma once

#include "DravelKit/TextRewriting/TextRewriter.h"
#include "tests/TextRewriting/MessagesStandIn.h"
#include "tests/support/MemoryKeyring.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tacla::testing {

struct RewritingWorld : ::testing::Test {
    const TemporaryFolder folder;
    const std::shared_ptr<MemoryKeyring> keyring = std::make_shared<MemoryKeyring>();
    dravel::KeyStore keys{keyring, "essai", dravel::Secret()};
    std::string reports;
    dravel::RewriteSettings settings{folder / "rewriting.json", folder.path(),
                                     [this](const std::string& report) { reports += report + "\n"; }};
    std::string told; // the words as they came in
    std::vector<LoopbackServer::Request> requests;
    std::stop_source stop;

    RewritingWorld() { keyring->items["essai"] = messages::key; }

    // The new text, or the French reason in brackets. Every request was one that the real service would take.
    std::string outcome(std::vector<LoopbackServer::Answer> script, std::string_view text = "Il fesait beau.",
                        dravel::Mode mode = dravel::Mode::correction) {
        LoopbackServer server(std::move(script));
        std::string result;
        told.clear();
        try {
            const dravel::TextRewriter rewriter(keys, settings, {.base = server.base()});
            result = rewriter.rewrite(text, mode, stop.get_token(), [this](auto words) { told += words; });
        } catch (const dravel::RewriteError& error) {
            result = "[" + error.description() + "]";
        }
        requests = server.requests();
        for (const auto& request : requests) EXPECT_EQ(messages::fault(request), "");
        EXPECT_EQ(result.find(messages::key.substr(8)), result.npos);
        return result;
    }
};

}
