#include "Tacla/Linux/Bus.h"

#include <QSocketNotifier>

namespace tacla {

namespace {

constexpr auto addressVariable = "DBUS_SESSION_BUS_ADDRESS";

}

Bus::Bus(Kind kind)
    : kind_(kind), address_(kind == Kind::session ? sessionBusAddress() : systemBusAddress()), probe_(address_) {}

bool Bus::answersWithin(std::chrono::milliseconds patience) {
    return probe_.state(patience) == BusProbe::State::answers;
}

bool Bus::isAbsent() { return probe_.state() == BusProbe::State::absent; }

void Bus::open() {
    if (connection_) return;
    if (answersWithin({})) return connectNow();
    if (isAbsent() || waiting_) return;
    waiting_ = true;
    auto* notifier = new QSocketNotifier(probe_.descriptor(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        notifier->deleteLater();
        if (!connection_ && answersWithin({})) connectNow();
    });
}

void Bus::connectNow() {
    const auto name = kind_ == Kind::session ? QStringLiteral("tacla-session") : QStringLiteral("tacla-system");
    const auto connection = QDBusConnection::connectToBus(QString::fromStdString(address_), name);
    if (!connection.isConnected()) return;
    connection_ = connection;
    // What the library says to itself.
    connection_->connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                         QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                         SLOT(disconnected()));
    opened_(connection);
}

void Bus::whenOpen(std::function<void(const QDBusConnection&)> observer) {
    if (connection_) return observer(*connection_);
    observers_.push_back(opened_.connect(std::move(observer)));
}

WithoutSessionBus::WithoutSessionBus() {
    if (qEnvironmentVariableIsSet(addressVariable)) address_ = qgetenv(addressVariable);
    qputenv(addressVariable, "disabled:");
}

WithoutSessionBus::~WithoutSessionBus() {
    if (address_)
        qputenv(addressVariable, *address_);
    else
        qunsetenv(addressVariable);
}

void keepQtFromSessionBus() {
    const WithoutSessionBus without;
    QDBusConnection::sessionBus();
}

}
