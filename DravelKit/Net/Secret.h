#pragma once

#include <ostream>
#include <string>
#include <utility>

namespace dravel {

// A token, a code, a verifier or a client secret: a text that never shows itself when printed.
class Secret {
  public:
    Secret() = default;
    explicit Secret(std::string text) : text_(std::move(text)) {}

    // The text itself, for the one place that sends or stores it.
    const std::string& reveal() const { return text_; }
    bool isEmpty() const { return text_.empty(); }

    bool operator==(const Secret&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Secret&) { return out << "…"; }

  private:
    std::string text_;
};

}
