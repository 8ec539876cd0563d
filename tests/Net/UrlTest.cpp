#include "DravelKit/Net/Url.h"

#include <gtest/gtest.h>

using dravel::Url;

TEST(Url, EncodesEverythingButLettersDigitsAndFourMarks) {
    EXPECT_EQ(dravel::percentEncoded("AZaz09-._~"), "AZaz09-._~");
    EXPECT_EQ(dravel::percentEncoded("c_1@group.calendar.google.com"), "c_1%40group.calendar.google.com");
    EXPECT_EQ(dravel::percentEncoded("fr#holiday/1 +é%"), "fr%23holiday%2F1%20%2B%C3%A9%25");
    EXPECT_EQ(dravel::encodedItems({{"scope", "https://a/b c"}, {"tacla", "1=1&2"}}),
              "scope=https%3A%2F%2Fa%2Fb%20c&tacla=1%3D1%262");
}

TEST(Url, DecodesWhatABrowserSends) {
    using Items = dravel::QueryItems;
    EXPECT_EQ(dravel::decodedItems("code=4%2F0A+b&state=x=y"), (Items{{"code", "4/0A+b"}, {"state", "x=y"}}));
    EXPECT_EQ(dravel::decodedItems("&&error&%63ode=%"), (Items{{"error", ""}, {"code", "%"}}));
    EXPECT_EQ(dravel::decodedItems("a=%4&b=%zz&c=%c3%a9"), (Items{{"a", "%4"}, {"b", "%zz"}, {"c", "é"}}));
    EXPECT_EQ(dravel::decodedItems(""), Items{});
}

TEST(Url, TellsThisMachineFromNamesThatOnlyLookLikeIt) {
    for (const auto* text : {"http://127.0.0.1", "http://127.0.0.1:8765/a?b#c", "https://[::1]:1", "HTTP://127.0.0.1/"})
        EXPECT_TRUE(Url::parse(text).value().isLoopback()) << text;
    for (const auto* text : {"http://localhost:1", "http://127.0.0.1.example.org/", "http://example.org/127.0.0.1",
                             "http://127.0.0.2/", "http://[::2]/", "http://0.0.0.0/"})
        EXPECT_FALSE(Url::parse(text).value().isLoopback()) << text;
    for (const auto* text : {"", "127.0.0.1:80", "ftp://127.0.0.1/", "file:///etc/hosts", "http://",
                             "http://127.0.0.1@example.org/", "http://127.0.0.1:x/", "http://127.0.0.1:99999/"})
        EXPECT_FALSE(Url::parse(text)) << text;
}
