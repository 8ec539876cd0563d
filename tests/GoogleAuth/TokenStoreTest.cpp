#include "DravelKit/GoogleAuth/TokenStore.h"

#include "tests/GoogleAuth/Loopback.h"
#include "tests/support/MemoryKeyring.h"
#include "tests/support/TemporaryFolder.h"

using namespace dravel;
using namespace tacla::testing;

namespace {

constexpr auto key = "fr.dravel.Essai.google";

struct Store : testing::Test {
    TemporaryFolder folder;
    std::shared_ptr<MemoryKeyring> keyring = std::make_shared<MemoryKeyring>();
    TokenStore store{withLegacyFile(), {.data = folder.path(), .resources = {}}, keyring};

    static GoogleConfig withLegacyFile() {
        auto config = essai();
        config.legacyToken = GoogleConfig::LegacyToken{.file = "token.txt", .read = [](std::string_view bytes) {
                                                           return bytes.starts_with("jeton")
                                                                      ? std::optional(Secret(std::string(bytes)))
                                                                      : std::nullopt;
                                                       }};
        return config;
    }
    std::filesystem::path legacy() {
        std::filesystem::create_directories(folder / "Essai");
        return folder / "Essai/token.txt";
    }
    std::string read(Keyring::Ask ask = Keyring::Ask::yes) {
        const auto found = store.read(ask, {});
        if (found.found == Keyring::Found::unreachable) return "unreachable: " + found.trouble.reason;
        return found.found == Keyring::Found::found ? found.secret.reveal() : "absent";
    }
};

}

TEST_F(Store, MovesTheTokenOfAnEarlierVersionIntoTheKeyring) {
    keyring->items[key] = "ancien";
    for (const auto* bytes : {"jeton-1", "rien", "", "\xff\xfe"}) {
        writeBytes(legacy(), bytes);
        EXPECT_EQ(read(), "jeton-1") << "what holds no token is dropped";
        EXPECT_FALSE(std::filesystem::exists(legacy()));
    }
}

TEST_F(Store, KeepsTheFileUntilTheKeyringHasTheToken) {
    writeBytes(legacy(), "jeton-1");
    keyring->storeTrouble = Keyring::Trouble{.reason = "le trousseau de clés a refusé l'opération"};
    EXPECT_EQ(read(), "unreachable: le trousseau de clés a refusé l'opération");
    keyring->storeTrouble.reset();
    keyring->trouble = Keyring::Trouble{.reason = "le trousseau de clés est verrouillé"};
    EXPECT_EQ(read(), "unreachable: le trousseau de clés est verrouillé");
    EXPECT_EQ(readBytes(legacy()), "jeton-1");
    keyring->trouble.reset();
    EXPECT_EQ(read(), "jeton-1");
    EXPECT_FALSE(std::filesystem::exists(legacy()));
}

TEST_F(Store, AsksTheUserOnceToUnlockTheKeyring) {
    keyring->items[key] = "jeton-1";
    keyring->trouble = Keyring::Trouble{.reason = "le trousseau de clés est verrouillé", .declined = true};
    writeBytes(legacy(), "jeton-0");
    EXPECT_EQ(read(Keyring::Ask::no), "unreachable: le trousseau de clés est verrouillé");
    EXPECT_EQ(keyring->asked, 0) << "neither for a look nor for the file of an earlier version";
    std::filesystem::remove(legacy());
    for (int i = 0; i < 3; ++i) EXPECT_EQ(read(), "unreachable: le trousseau de clés est verrouillé");
    EXPECT_EQ(keyring->asked, 1);
    EXPECT_TRUE(store.write(Secret("jeton-2"), {})); // the user's own wish: asked again
    EXPECT_EQ(keyring->asked, 2);
    keyring->trouble.reset();
    EXPECT_EQ(read(), "jeton-1");
}

TEST_F(Store, RemovesTheTokenAndTheFileAlike) {
    keyring->items[key] = "jeton-1";
    writeBytes(legacy(), "jeton-0");
    EXPECT_FALSE(store.remove({}));
    EXPECT_TRUE(keyring->items.empty());
    EXPECT_FALSE(std::filesystem::exists(legacy()));
    EXPECT_EQ(read(), "absent");
}
