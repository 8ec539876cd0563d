#pragma once

#include "DravelKit/Foundation/Signal.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tacla {

// Whether a message bus answers at an address, found out without ever waiting longer than asked. A bus library that
// connects to a socket on which nobody answers waits for half a minute.
class BusProbe {
  public:
    explicit BusProbe(const std::string& address);
    ~BusProbe();
    BusProbe(const BusProbe&) = delete;
    BusProbe& operator=(const BusProbe&) = delete;

    enum class State { answers, silent, absent };
    State state(std::chrono::milliseconds patience = {});

    int descriptor() const { return descriptor_; } // readable as soon as there is an answer

  private:
    State state_ = State::absent;
    int descriptor_ = -1;
};

// "" when there is none. Never "autolaunch:", which would start a bus of its own.
std::string sessionBusAddress();
std::string systemBusAddress();

// A message bus that is there at the start, comes later, or never: nobody waits for it.
class Bus : public QObject {
    Q_OBJECT

  public:
    enum class Kind { session, system };
    explicit Bus(Kind);

    // Asked before the connection, to know whether the bus answers that soon.
    bool answersWithin(std::chrono::milliseconds);
    bool isAbsent();

    // Connects at once when the bus answers already, else when it does. Needs a QCoreApplication. May be called again.
    void open();

    std::optional<QDBusConnection> connection() const { return connection_; }
    // Calls the observer now, when the bus is there, or later.
    void whenOpen(std::function<void(const QDBusConnection&)>);
    dravel::Signal<> lost; // for good: a bus that starts anew is another session's

  private Q_SLOTS:
    void disconnected() { lost(); }

  private:
    void connectNow();

    Kind kind_;
    std::string address_;
    BusProbe probe_;
    bool waiting_ = false;
    std::optional<QDBusConnection> connection_;
    dravel::Signal<const QDBusConnection&> opened_;
    std::vector<dravel::Connection> observers_;
};

// As long as it lives, the environment names no session bus, so that Qt's own parts do not wait for a silent one. Made
// and dropped while no other thread reads the environment.
class WithoutSessionBus {
  public:
    WithoutSessionBus();
    ~WithoutSessionBus();
    WithoutSessionBus(const WithoutSessionBus&) = delete;
    WithoutSessionBus& operator=(const WithoutSessionBus&) = delete;

  private:
    std::optional<QByteArray> address_;
};

// The same for good: Qt asks for the session bus once, and remembers the answer.
void keepQtFromSessionBus();

}
