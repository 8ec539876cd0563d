#include "DravelKit/GoogleAuth/CallbackPage.h"

#include "tests/GoogleAuth/Loopback.h"

#include <gtest/gtest.h>

using namespace dravel;
using tacla::testing::essai;

namespace {

// The page as a reader sees it: the title, then the text of the card, one line per element.
std::string textOf(const std::string& page) {
    std::string text, line;
    bool tag = false;
    for (const char c : page.substr(page.find("<title>"), page.find("<style>") - page.find("<title>")) +
                            page.substr(page.find("<body>"))) {
        if (c == '<' || c == '\n') {
            if (!line.empty()) text += line + "\n";
            line.clear();
        }
        tag = c == '<' || (tag && c != '>');
        if (!tag && c != '>' && c != '\n') line += c;
    }
    return text;
}

}

TEST(CallbackPage, SaysThatTheAccountIsConnected) {
    EXPECT_EQ(textOf(CallbackPage::success(essai())), "Essai · C'est connecté\n"
                                                      "C'est connecté\n"
                                                      "L'agenda est à jour.\n"
                                                      "Essai, par Dravel\n"
                                                      "Vous pouvez fermer cet onglet.\n");
}

TEST(CallbackPage, SaysWhyItIsNotAndWhereToTryAgain) {
    const auto message = [](const std::string& error) {
        const auto page = CallbackPage::failure(error, essai());
        const auto start = page.find("<p>") + 3;
        return page.substr(start, page.find("</p>") - start);
    };
    const std::string again = " Relancez « Se connecter à Google… » depuis les réglages d'Essai quand vous voulez.";
    EXPECT_EQ(message("access_denied"), "Vous avez refusé l'accès à votre agenda." + again);
    for (const auto* code : {"admin_policy_enforced", "org_internal"})
        EXPECT_EQ(message(code), "L'administrateur Google Workspace de votre organisation bloque les apps tierces : "
                                 "demandez-lui d'autoriser Essai." +
                                     again);
    EXPECT_EQ(message("<script>\"a\" & b</script>"),
              "Google a répondu : <code>&lt;script&gt;&quot;a&quot; &amp; b&lt;/script&gt;</code>." + again);
}

TEST(CallbackPage, LoadsNothingFromElsewhere) {
    for (const auto& page : {CallbackPage::success(essai()), CallbackPage::failure("x", essai())})
        for (const auto* elsewhere : {"http", "src=", "href=", "url(", "@import"})
            EXPECT_EQ(page.find(elsewhere), page.npos) << elsewhere;
}
