#pragma once

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

namespace tacla::testing {

// scripts/google_stand_in.py in a process of its own, for as long as this object lives.
class GoogleStandIn {
  public:
    GoogleStandIn();
    ~GoogleStandIn() { ::pclose(input_); }
    GoogleStandIn(const GoogleStandIn&) = delete;
    GoogleStandIn& operator=(const GoogleStandIn&) = delete;

    const std::string& base() const { return base_; } // "http://127.0.0.1:41234"

    nlohmann::json control(const nlohmann::json& order) const;
    nlohmann::json state(const std::string& part) const; // calendars, log, secrets, overlap
    std::string clientFile() const;

  private:
    std::string ask(const std::string& method, const std::string& path, const std::string& body) const;

    std::FILE* input_; // it ends when its input does
    std::string base_;
};

}
