#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace dravel {

// Keeps an observer connected for as long as it lives.
class Connection {
  public:
    Connection() = default;
    explicit Connection(std::function<void()> disconnect) : disconnect_(std::move(disconnect)) {}
    Connection(Connection&& other) noexcept : disconnect_(std::exchange(other.disconnect_, nullptr)) {}
    Connection& operator=(Connection other) noexcept {
        disconnect_.swap(other.disconnect_); // the old one ends with `other`
        return *this;
    }
    ~Connection() { reset(); }
    void reset() {
        if (auto disconnect = std::exchange(disconnect_, nullptr)) disconnect();
    }

  private:
    std::function<void()> disconnect_;
};

// A list of observers. One thread. An observer may connect or disconnect observers, itself included, while it is told.
template <class... Arguments>
class Signal {
  public:
    using Observer = std::function<void(Arguments...)>;

    [[nodiscard]] Connection connect(Observer observer) {
        const auto id = ++observers_->last;
        observers_->all[id] = std::move(observer);
        return Connection([observers = std::weak_ptr(observers_), id] {
            if (auto alive = observers.lock()) alive->all.erase(id);
        });
    }

    void operator()(Arguments... arguments) const {
        const auto observers = observers_;
        for (auto next = observers->all.begin(); next != observers->all.end();) {
            const auto id = next->first;
            const auto observer = next->second; // a copy: the observer may disconnect itself
            observer(arguments...);
            next = observers->all.upper_bound(id);
        }
    }

  private:
    struct Observers {
        std::map<std::uint64_t, Observer> all;
        std::uint64_t last = 0;
    };
    std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
};

}
