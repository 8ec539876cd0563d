#include "tests/support/GoogleStandIn.h"

#include "DravelKit/Net/HttpClient.h"
#include "tests/support/TemporaryFolder.h"

#include <sys/stat.h>

#include <fstream>
#include <stdexcept>

namespace tacla::testing {

GoogleStandIn::GoogleStandIn() {
    const TemporaryFolder folder;
    const auto said = (folder / "base").string();
    ::mkfifo(said.c_str(), 0600);
    input_ = ::popen(("exec /usr/bin/python3 " TACLA_GOOGLE_STAND_IN " --until-eof > " + said).c_str(), "we");
    std::ifstream output(said);
    if (!std::getline(output, base_)) throw std::runtime_error("the stand-in did not start");
}

std::string GoogleStandIn::ask(const std::string& method, const std::string& path, const std::string& body) const {
    dravel::HttpClient http;
    return http.send({.method = method, .url = base_ + path, .body = body}).body;
}

nlohmann::json GoogleStandIn::control(const nlohmann::json& order) const {
    return nlohmann::json::parse(ask("POST", "/control", order.dump()));
}

nlohmann::json GoogleStandIn::state(const std::string& part) const {
    return nlohmann::json::parse(ask("GET", "/control/state?" + part, ""));
}

std::string GoogleStandIn::clientFile() const { return ask("GET", "/control/client", ""); }

}
