#pragma once

#include <memory>
#include <utility>

namespace dravel {

// A member that ends with its owner: what it guards does nothing from then on. For callbacks that may come too late.
class Lifetime {
  public:
    template <class Function>
    auto guard(Function function) const {
        return [token = std::weak_ptr(token_), function = std::move(function)](auto&&... arguments) {
            if (!token.expired()) function(std::forward<decltype(arguments)>(arguments)...);
        };
    }

  private:
    struct Token {};
    std::shared_ptr<Token> token_ = std::make_shared<Token>();
};

}
