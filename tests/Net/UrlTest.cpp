#include "DravelKit/Net/Url.h"

#include <gtest/gtest.h>

TEST(Url, EncodesEverythingButLettersDigitsAndFourMarks) {
    EXPECT_EQ(dravel::percentEncoded("AZaz09-._~@#/ +é%"), "AZaz09-._~%40%23%2F%20%2B%C3%A9%25");
    EXPECT_EQ(dravel::percentEncoded(std::string_view("a\0b", 3).substr(1)) + dravel::percentEncoded(""), "%00b");
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
