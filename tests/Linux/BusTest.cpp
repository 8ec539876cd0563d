#include "Tacla/Linux/Bus.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tacla;
using namespace std::chrono_literals;

namespace {

// A socket that lets others connect, and answers when it is told to.
class Listener {
  public:
    explicit Listener(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(socket_, 5), 0);
    }
    ~Listener() { close(socket_); }

    void answer(std::string_view text) {
        const int peer = accept(socket_, nullptr, nullptr);
        EXPECT_EQ(write(peer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(peer);
    }

  private:
    int socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

}

TEST(BusProbe, FindsOutWhetherABusAnswers) {
    const tacla::testing::TemporaryFolder folder;
    const auto path = folder / "une adresse";
    Listener listener(path);
    const auto address = "unix:guid=0123,path=" + folder.path().string() + "/une%20adresse;tcp:host=x";
    BusProbe alive(address);
    EXPECT_EQ(alive.state(), BusProbe::State::silent);
    listener.answer("REJECTED EXTERNAL\r\n");
    EXPECT_EQ(alive.state(1s), BusProbe::State::answers);

    BusProbe hungUp(address);
    listener.answer("");
    EXPECT_EQ(hungUp.state(1s), BusProbe::State::absent);
    EXPECT_EQ(BusProbe(address).state(1ms), BusProbe::State::silent);
}

TEST(BusProbe, KnowsAddressesWhereNobodyListens) {
    const tacla::testing::TemporaryFolder folder;
    const auto nobody = "unix:path=" + (folder / "nobody").string();
    for (const auto& address : {std::string(), std::string("disabled:"), nobody, "unix:path=" + std::string(200, 'x'),
                                std::string("unix:abstract=tacla/nobody%2"), std::string("unix:guid,runtime=yes")})
        EXPECT_NE(BusProbe(address).state(), BusProbe::State::silent) << address;
    EXPECT_EQ(BusProbe(nobody).state(), BusProbe::State::absent);
}
