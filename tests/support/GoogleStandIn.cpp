#include "tests/support/GoogleStandIn.h"

#include "DravelKit/Net/HttpClient.h"

#include <sys/stat.h>

#include <fstream>
#include <stdexcept>

namespace tacla::testing {

GoogleStandIn::GoogleStandIn() {
    const auto pipe = folder_ / "base";
    ::mkfifo(pipe.c_str(), 0600);
    const auto command = "exec /usr/bin/python3 " TACLA_GOOGLE_STAND_IN " --until-eof > " + pipe.string();
    process_ = ::popen(command.c_str(), "we");
    if (process_ == nullptr || !std::getline(std::ifstream(pipe), base_))
        throw std::runtime_error("the stand-in did not start");
}

GoogleStandIn::~GoogleStandIn() { ::pclose(process_); }

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
