#include "DravelKit/GoogleAuth/LoopbackReceiver.h"

#include <gtest/gtest.h>

using dravel::CallbackRequest;

namespace {

// "code=… state=…" of a callback, "404" of another request, "?" of what is no request yet.
std::string read(std::string_view bytes) {
    const auto request = CallbackRequest::parse(bytes);
    if (!request) return "?";
    if (!request->isCallback()) return "404";
    std::string items;
    for (const auto& [name, value] : request->query) items += (items.empty() ? "" : " ") + name + "=" + value;
    return items;
}

}

TEST(CallbackRequest, ReadsTheQueryOfTheRequestLine) {
    const struct {
        std::string_view bytes, expected;
    } table[] = {
        {"GET /?state=s&code=4%2F0Ab&scope=a%20b HTTP/1.1\r\n\r\n", "code=4/0Ab scope=a b state=s"},
        {"GET /?error=access_denied&state=s HTTP/1.1\r\n\r\n", "error=access_denied state=s"},
        {"GET /n/importe/quoi?code HTTP/1.0\n\n", "code="},
        {"GET /?code=a&code=b HTTP/1.1\r\n\r\n", "code=a"},
        {"GET /?code=a+b#error=c HTTP/1.1\r\n\r\n", "code=a+b"},
        {"GET /?code=%C3%A9&x=%FF HTTP/1.1\r\n\r\n", "code=é"},
        {"GET /favicon.ico HTTP/1.1\r\n\r\n", "404"},
        {"GET /?encode=a HTTP/1.1\r\n\r\n", "404"},
        {"GET / HTTP/1.1\r\nReferer: /?code=a\r\n\r\n", "404"},
        {"GET /?code=a HT", "?"},
        {"GET /?code=a\r\n\r\n", "?"},
        {"GET /?code=a b HTTP/1.1\r\n\r\n", "?"},
        {"\x16\x03\x01\x02\x01\n\x01", "?"},
        {"", "?"},
    };
    for (const auto& row : table) EXPECT_EQ(read(row.bytes), row.expected) << row.bytes;
}

TEST(CallbackRequest, IsForUsWhenItsHostNamesThisMachineOrNothing) {
    const auto withHost = [](const std::string& headers) {
        return read("GET /?code=a HTTP/1.1\r\n" + headers + "\r\n");
    };
    for (const auto* headers : {"", "Host: 127.0.0.1\r\n", "Host: 127.0.0.1:41234\r\n", "HOST:LocalHost:80\r\n",
                                "Accept: */*\r\nhost: localhost\r\n", "X-Host: example.org\r\n"})
        EXPECT_EQ(withHost(headers), "code=a") << headers;
    for (const auto* headers :
         {"Host: example.org\r\n", "Host: 127.0.0.1.example.org\r\n", "Host: 127.0.0.1:80.org\r\n", "Host: [::1]\r\n",
          "Host:\r\n", "Host: localhost\r\nHost: example.org\r\n"})
        EXPECT_EQ(withHost(headers), "404") << headers;
}
