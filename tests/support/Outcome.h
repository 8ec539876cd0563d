#pragma once

#include <exception>
#include <string>
#include <type_traits>

namespace tacla::testing {

// The text that the action gives, "" when it gives none, or the reason why it failed.
template <class Action>
std::string outcome(Action action) {
    try {
        if constexpr (std::is_void_v<decltype(action())>)
            return action(), "";
        else
            return action();
    } catch (const std::exception& error) {
        return error.what();
    }
}

}
