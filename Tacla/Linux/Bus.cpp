#include "Tacla/Linux/Bus.h"

#include "DravelKit/Foundation/Text.h"

#include <QSocketNotifier>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr auto addressVariable = "DBUS_SESSION_BUS_ADDRESS";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Values of a bus address are escaped like those of a web address (D-Bus specification, "Server Addresses").
std::string unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            plain += static_cast<char>(std::strtol(std::string(text.substr(i + 1, 2)).c_str(), nullptr, 16));
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

struct SocketAddress {
    sockaddr_un address{};
    socklen_t length = 0;
};

std::optional<SocketAddress> unixSocket(std::string_view address) {
    constexpr std::string_view transport = "unix:";
    if (!address.starts_with(transport)) return {};
    for (const auto pair : dravel::split(address.substr(transport.size()), ",")) {
        const auto equals = pair.find('=');
        const auto key = pair.substr(0, equals);
        if (equals == pair.npos || (key != "path" && key != "abstract")) continue;
        // An abstract name begins with a zero byte.
        const auto name = std::string(key == "abstract" ? 1 : 0, '\0') + unescaped(pair.substr(equals + 1));
        SocketAddress socket;
        if (name.size() >= sizeof socket.address.sun_path) return {};
        socket.address.sun_family = AF_UNIX;
        std::memcpy(socket.address.sun_path, name.data(), name.size());
        const auto terminator = key == "path" ? 1U : 0U;
        socket.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() + terminator);
        return socket;
    }
    return {};
}

}

BusProbe::BusProbe(const std::string& address) {
    const auto socketAddress = unixSocket(std::string_view(address).substr(0, address.find(';')));
    if (!socketAddress) {
        // Another transport, such as tcp:, is taken at its word.
        state_ = address.empty() || address.starts_with("disabled:") ? State::absent : State::answers;
        return;
    }
    descriptor_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const auto* name = reinterpret_cast<const sockaddr*>(&socketAddress->address);
    // The credentials byte and a bare AUTH: every server answers with the mechanisms that it knows.
    constexpr std::string_view hello("\0AUTH\r\n", 7);
    if (connect(descriptor_, name, socketAddress->length) == 0 &&
        send(descriptor_, hello.data(), hello.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(hello.size())) {
        state_ = State::silent;
    }
}

BusProbe::~BusProbe() {
    if (descriptor_ >= 0) close(descriptor_);
}

BusProbe::State BusProbe::state(std::chrono::milliseconds patience) {
    if (state_ != State::silent) return state_;
    pollfd waiting{.fd = descriptor_, .events = POLLIN, .revents = 0};
    if (poll(&waiting, 1, static_cast<int>(patience.count())) <= 0) return state_;
    char first = 0;
    const auto got = recv(descriptor_, &first, 1, MSG_PEEK);
    return state_ = got > 0 ? State::answers : State::absent;
}

std::string sessionBusAddress() {
    auto address = environment(addressVariable);
    if (address.starts_with("autolaunch:")) return "";
    if (!address.empty()) return address;
    const auto socket = environment("XDG_RUNTIME_DIR") + "/bus";
    return std::filesystem::exists(socket) ? "unix:path=" + socket : "";
}

std::string systemBusAddress() {
    const auto address = environment("DBUS_SYSTEM_BUS_ADDRESS");
    return address.empty() ? "unix:path=/run/dbus/system_bus_socket" : address;
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
    const auto name = kind_ == Kind::session ? u"tacla-session"_s : u"tacla-system"_s;
    const auto connection = QDBusConnection::connectToBus(QString::fromStdString(address_), name);
    if (!connection.isConnected()) return;
    connection_ = connection;
    // What the library says to itself.
    connection_->connect({}, u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s, this,
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
