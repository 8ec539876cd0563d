#pragma once

#include "DravelKit/Foundation/Signal.h"
#include "Tacla/Linux/BusProbe.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <optional>

namespace tacla {

// A message bus that is there at the start, comes later, or never: nobody waits for it.
class Bus : public QObject {
  public:
    enum class Kind { session, system };
    explicit Bus(Kind);

    // Asked before the connection, to know whether the bus answers that soon.
    bool answersWithin(std::chrono::milliseconds);
    bool isAbsent();

    // Connects at once when the bus answers already, else when it does. Needs a QCoreApplication.
    void open();

    std::optional<QDBusConnection> connection() const { return connection_; }
    // Calls the observer now, when the bus is there, or later.
    void whenOpen(std::function<void(const QDBusConnection&)>);

  private:
    void connectNow();

    Kind kind_;
    std::string address_;
    BusProbe probe_;
    std::optional<QDBusConnection> connection_;
    dravel::Signal<const QDBusConnection&> opened_;
    std::vector<dravel::Connection> observers_;
};

// Keeps Qt's own parts from waiting for a session bus that does not answer, as long as it lives. Made and dropped while
// the program has one thread, or none that reads the environment.
class WithoutSessionBus {
  public:
    WithoutSessionBus();
    ~WithoutSessionBus();
    WithoutSessionBus(const WithoutSessionBus&) = delete;
    WithoutSessionBus& operator=(const WithoutSessionBus&) = delete;

  private:
    std::optional<QByteArray> address_;
};

}
