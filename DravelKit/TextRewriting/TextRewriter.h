#pragma once

#include "DravelKit/Net/HttpClient.h"
#include "DravelKit/TextRewriting/KeyStore.h"
#include "DravelKit/TextRewriting/RewriteError.h"
#include "DravelKit/TextRewriting/RewriteSettings.h"

namespace dravel {

struct RewriteService {
    std::string base = "https://api.anthropic.com"; // plain http only to this machine
    // The exchange is one rewriting, its retry included.
    HttpLimits limits = {std::chrono::seconds(60), std::chrono::minutes(20), std::size_t{32} << 20};
    std::chrono::seconds patience{30}; // the longest wait before the retry
};

// Has texts rewritten by a language model, through the Messages API. Calls block: they belong in a background job.
class TextRewriter {
  public:
    static constexpr std::size_t longestText = 100'000; // characters

    TextRewriter(const KeyStore&, const RewriteSettings&, RewriteService = {});

    // Words of the answer as they come in; what they make up counts only once rewrite has returned.
    using Words = std::function<void(std::string_view)>;

    // The new text and nothing else, whole; a blank text comes back as it is. The text is data: what it says is never
    // an instruction. Tries once more where the service names a wait. Throws RewriteError.
    std::string rewrite(std::string_view text, Mode, const std::stop_token& = {}, const Words& = {}) const;

  private:
    HttpRequest request(std::string_view text, Mode, const std::stop_token&) const;

    const KeyStore& keys_;
    const RewriteSettings& settings_;
    const RewriteService service_;
};

}
