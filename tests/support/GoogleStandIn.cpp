#include "tests/support/GoogleStandIn.h"

#include "DravelKit/Net/HttpClient.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace tacla::testing {

GoogleStandIn::GoogleStandIn(std::vector<std::string> options) {
    std::array<int, 2> input{}, output{};
    if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    options.insert(options.begin(), {"/usr/bin/python3", TACLA_GOOGLE_STAND_IN, "--until-eof"});
    std::vector<char*> arguments;
    for (auto& option : options) arguments.push_back(option.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input[0], 0);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], 1);
    const int failure = ::posix_spawn(&process_, "/usr/bin/python3", &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    input_ = input[1];
    std::string line;
    char c = 0;
    while (failure == 0 && ::read(output[0], &c, 1) == 1 && c != '\n') line += c;
    ::close(output[0]);
    if (line.empty()) throw std::runtime_error("the stand-in did not start");
    base_ = line;
}

GoogleStandIn::~GoogleStandIn() {
    ::close(input_);
    ::waitpid(process_, nullptr, 0);
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
