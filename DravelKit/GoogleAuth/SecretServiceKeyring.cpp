#include "DravelKit/GoogleAuth/SecretServiceKeyring.h"

#include "DravelKit/Foundation/Text.h"

#include <gio/gio.h>
#include <libsecret/secret.h>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace dravel {

namespace {

// Cancels a conversation with the keyring when its time is up or when the stop token asks. The time that the user
// spends in the desktop's own dialog does not count.
class KeyringDeadline {
  public:
    KeyringDeadline(std::chrono::milliseconds, std::stop_token);

    GCancellable* cancellable() const { return cancellable_.get(); }
    bool passed() const;

    void dialogOpened();
    void dialogClosed(); // the time starts anew

  private:
    void watch(const std::stop_token&);

    const std::chrono::milliseconds time_;
    const std::unique_ptr<GCancellable, decltype(&g_object_unref)> cancellable_;
    mutable std::mutex mutex_; // guards the next four
    std::condition_variable_any changed_;
    std::chrono::steady_clock::time_point end_;
    int dialogs_ = 0;
    bool passed_ = false;
    std::stop_callback<std::function<void()>> stopped_;
    std::jthread watcher_; // last: it ends before what it uses
};

KeyringDeadline::KeyringDeadline(std::chrono::milliseconds time, std::stop_token stop)
    : time_(time), cancellable_(g_cancellable_new(), g_object_unref), end_(std::chrono::steady_clock::now() + time),
      stopped_(std::move(stop), [cancellable = cancellable_.get()] { g_cancellable_cancel(cancellable); }),
      watcher_([this](const std::stop_token& over) { watch(over); }) {}

bool KeyringDeadline::passed() const {
    const std::lock_guard lock(mutex_);
    return passed_;
}

void KeyringDeadline::dialogOpened() {
    const std::lock_guard lock(mutex_);
    ++dialogs_;
    changed_.notify_all();
}

void KeyringDeadline::dialogClosed() {
    const std::lock_guard lock(mutex_);
    --dialogs_;
    end_ = std::chrono::steady_clock::now() + time_;
    changed_.notify_all();
}

void KeyringDeadline::watch(const std::stop_token& over) {
    std::unique_lock lock(mutex_);
    while (!over.stop_requested()) {
        if (dialogs_ > 0) {
            changed_.wait(lock, over, [this] { return dialogs_ == 0; });
        } else if (std::chrono::steady_clock::now() < end_) {
            changed_.wait_until(lock, over, end_, [this] { return dialogs_ > 0; });
        } else {
            passed_ = true;
            lock.unlock(); // cancelling runs the callbacks of whoever waits
            g_cancellable_cancel(cancellable_.get());
            return;
        }
    }
}

constexpr const char* deadlineKey = "dravel-deadline";
constexpr const char* noKeyring = "aucun trousseau de clés n'est disponible";
constexpr const char* locked = "le trousseau de clés est verrouillé";
constexpr const char* refused = "le trousseau de clés a refusé l'opération";

KeyringDeadline& deadlineOf(SecretService* service) {
    return *static_cast<KeyringDeadline*>(g_object_get_data(G_OBJECT(service), deadlineKey));
}

// Items of other programs' making, such as secret-tool's, have another schema name: only the attributes count.
const SecretSchema& schema() {
    static const SecretSchema value = [] {
        SecretSchema s{};
        s.name = "org.freedesktop.Secret.Generic";
        s.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        s.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        s.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return s;
    }();
    return value;
}

}

extern "C" {

// The service object of libsecret, which tells our deadline while a dialog is open.
struct DravelSecretService {
    SecretService parent;
};
struct DravelSecretServiceClass {
    SecretServiceClass parent;
};

static GType dravel_secret_service_get_type();

static gpointer dravel_secret_service_parent() { return g_type_class_peek(SECRET_TYPE_SERVICE); }

static GVariant* dravel_prompt_sync(SecretService* self, SecretPrompt* prompt, GCancellable* cancellable,
                                    const GVariantType* type, GError** error) {
    deadlineOf(self).dialogOpened();
    GVariant* answer =
        SECRET_SERVICE_CLASS(dravel_secret_service_parent())->prompt_sync(self, prompt, cancellable, type, error);
    deadlineOf(self).dialogClosed();
    return answer;
}

static void dravel_prompt_async(SecretService* self, SecretPrompt* prompt, const GVariantType* type,
                                GCancellable* cancellable, GAsyncReadyCallback callback, gpointer data) {
    deadlineOf(self).dialogOpened();
    SECRET_SERVICE_CLASS(dravel_secret_service_parent())->prompt_async(self, prompt, type, cancellable, callback, data);
}

static GVariant* dravel_prompt_finish(SecretService* self, GAsyncResult* result, GError** error) {
    deadlineOf(self).dialogClosed();
    return SECRET_SERVICE_CLASS(dravel_secret_service_parent())->prompt_finish(self, result, error);
}

static void dravel_secret_service_class_init(gpointer type, gpointer) {
    auto* service = static_cast<SecretServiceClass*>(type);
    service->prompt_sync = dravel_prompt_sync;
    service->prompt_async = dravel_prompt_async;
    service->prompt_finish = dravel_prompt_finish;
}

static GType dravel_secret_service_get_type() {
    static const GType type = g_type_register_static_simple(
        SECRET_TYPE_SERVICE, "DravelSecretService", sizeof(DravelSecretServiceClass), dravel_secret_service_class_init,
        sizeof(DravelSecretService), nullptr, static_cast<GTypeFlags>(0));
    return type;
}
}

namespace {

struct GlibDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    void operator()(GList* list) const { g_list_free(list); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};
template <class Object>
using Glib = std::unique_ptr<Object, GlibDeleter>;

// One conversation with the Secret Service, in one thread. Every call throws KeyringTrouble.
class SecretServiceSession {
  public:
    struct KeyringTrouble {
        Keyring::Trouble trouble;
    };
    using Items = std::vector<Glib<SecretItem>>;

    SecretServiceSession(const Keyring::Item&, std::chrono::milliseconds, const std::stop_token&);

    // Every item with our attributes, in locked collections too.
    Items search();

    // The same; when there is something locked in the way, unlocks it or throws.
    Items searchUnlocked(Keyring::Ask);

    // A new item would be kept without another question.
    void openDefault();

    Secret secretOf(SecretItem*);
    void store(const std::string& label, const Secret&);
    void erase(SecretItem*);

  private:
    // Calls in this thread's own event context: the program's loop must not run the callbacks of our proxies.
    class OwnContext {
      public:
        OwnContext() : context_(g_main_context_new()) { g_main_context_push_thread_default(context_.get()); }
        ~OwnContext() {
            while (g_main_context_iteration(context_.get(), FALSE)) {
            } // what the proxies left to be told
            g_main_context_pop_thread_default(context_.get());
        }
        OwnContext(const OwnContext&) = delete;
        OwnContext& operator=(const OwnContext&) = delete;

      private:
        Glib<GMainContext> context_;
    };

    void open();
    Glib<SecretCollection> defaultCollection();
    void unlock(GDBusProxy* object, Keyring::Ask);
    void check(GError*, const char* otherwise) const;
    KeyringTrouble trouble(const std::string& otherwise) const;

    std::stop_token stop_;
    KeyringDeadline deadline_;
    OwnContext context_;
    Glib<GHashTable> attributes_;
    Glib<SecretService> service_;
};

SecretServiceSession::SecretServiceSession(const Keyring::Item& item, std::chrono::milliseconds time,
                                           const std::stop_token& stop)
    : stop_(stop), deadline_(time, stop),
      attributes_(secret_attributes_build(&schema(), "service", item.service.c_str(), "account", item.account.c_str(),
                                          nullptr)) {
    open();
}

SecretServiceSession::KeyringTrouble SecretServiceSession::trouble(const std::string& otherwise) const {
    if (stop_.stop_requested()) return {{.reason = "opération interrompue"}};
    if (deadline_.passed()) return {{.reason = "le trousseau de clés ne répond pas"}};
    return {{.reason = otherwise}};
}

void SecretServiceSession::check(GError* raw, const char* otherwise) const {
    const Glib<GError> error(raw);
    if (!error) return;
    const bool isLocked = g_error_matches(error.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED);
    throw trouble(isLocked ? locked : otherwise);
}

void SecretServiceSession::open() {
    GError* error = nullptr;
    const Glib<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, deadline_.cancellable(), &error));
    check(error, noKeyring);
    // The death of the bus ends a session, not the program. It may come while the service is being opened.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    service_.reset(secret_service_open_sync(dravel_secret_service_get_type(), nullptr, SECRET_SERVICE_OPEN_SESSION,
                                            deadline_.cancellable(), &error));
    check(error, noKeyring);
    g_object_set_data(G_OBJECT(service_.get()), deadlineKey, &deadline_);
}

SecretServiceSession::Items SecretServiceSession::search() {
    GError* error = nullptr;
    const Glib<GList> found(secret_service_search_sync(service_.get(), &schema(), attributes_.get(), SECRET_SEARCH_ALL,
                                                       deadline_.cancellable(), &error));
    check(error, refused);
    Items items;
    for (GList* node = found.get(); node != nullptr; node = node->next) items.emplace_back(SECRET_ITEM(node->data));
    return items;
}

Glib<SecretCollection> SecretServiceSession::defaultCollection() {
    GError* error = nullptr;
    Glib<SecretCollection> collection(secret_collection_for_alias_sync(
        service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, deadline_.cancellable(), &error));
    check(error, refused);
    return collection;
}

void SecretServiceSession::unlock(GDBusProxy* object, Keyring::Ask ask) {
    if (ask == Keyring::Ask::no) throw trouble(locked);
    GError* error = nullptr;
    GList* unlocked = nullptr;
    const Glib<GList> objects(g_list_prepend(nullptr, object));
    const int count =
        secret_service_unlock_sync(service_.get(), objects.get(), deadline_.cancellable(), &unlocked, &error);
    g_list_free_full(unlocked, g_object_unref);
    check(error, locked);
    if (count > 0) return;
    auto refusal = trouble(locked);
    refusal.trouble.declined = true;
    throw refusal;
}

SecretServiceSession::Items SecretServiceSession::searchUnlocked(Keyring::Ask ask) {
    auto items = search();
    if (items.empty()) {
        // A locked collection may hide what it holds.
        const auto collection = defaultCollection();
        if (!collection || !secret_collection_get_locked(collection.get())) return items;
        unlock(G_DBUS_PROXY(collection.get()), ask);
        return search();
    }
    for (const auto& item : items)
        if (secret_item_get_locked(item.get())) unlock(G_DBUS_PROXY(item.get()), ask);
    return items;
}

void SecretServiceSession::openDefault() {
    const auto collection = defaultCollection();
    if (!collection) throw trouble(noKeyring);
    if (secret_collection_get_locked(collection.get())) throw trouble(locked);
}

Secret SecretServiceSession::secretOf(SecretItem* item) {
    GError* error = nullptr;
    secret_item_load_secret_sync(item, deadline_.cancellable(), &error);
    check(error, refused);
    const Glib<SecretValue> value(secret_item_get_secret(item));
    if (!value) throw trouble(locked);
    gsize length = 0;
    const char* bytes = secret_value_get(value.get(), &length);
    return Secret(std::string(bytes, length));
}

void SecretServiceSession::store(const std::string& label, const Secret& secret) {
    const auto& text = secret.reveal();
    const Glib<SecretValue> value(secret_value_new(text.data(), static_cast<gssize>(text.size()), "text/plain"));
    GError* error = nullptr;
    secret_service_store_sync(service_.get(), &schema(), attributes_.get(), SECRET_COLLECTION_DEFAULT, label.c_str(),
                              value.get(), deadline_.cancellable(), &error);
    check(error, refused);
}

void SecretServiceSession::erase(SecretItem* item) {
    GError* error = nullptr;
    secret_item_delete_sync(item, deadline_.cancellable(), &error);
    check(error, refused);
}

// The service said yes, and yet a second look does not show it: some answer so when they are locked.
Keyring::Trouble unconfirmed() { return {.reason = "le trousseau de clés n'a pas confirmé l'opération"}; }
}

Keyring::LookUp SecretServiceKeyring::find(const Item& item, Ask ask, std::stop_token stop) {
    try {
        SecretServiceSession session(item, deadline_, stop);
        const auto items = session.searchUnlocked(ask);
        if (items.empty()) return {.found = Found::absent};
        auto secret = session.secretOf(items.front().get());
        if (secret.isEmpty() || !isValidUtf8(secret.reveal())) return {.found = Found::absent};
        return {.found = Found::found, .secret = std::move(secret)};
    } catch (const SecretServiceSession::KeyringTrouble& problem) {
        return {.found = Found::unreachable, .trouble = problem.trouble};
    }
}

Keyring::Failure SecretServiceKeyring::store(const Item& item, const std::string& label, const Secret& secret, Ask ask,
                                             std::stop_token stop) {
    try {
        SecretServiceSession session(item, deadline_, stop);
        session.searchUnlocked(ask);
        if (ask == Ask::no) session.openDefault();
        session.store(label, secret);
        // Read back. What else carries our attributes is older.
        const auto items = session.search();
        const auto ours = std::find_if(items.begin(), items.end(),
                                       [&](const auto& found) { return session.secretOf(found.get()) == secret; });
        if (ours == items.end()) return unconfirmed();
        for (auto other = items.begin(); other != items.end(); ++other)
            if (other != ours) session.erase(other->get());
        return std::nullopt;
    } catch (const SecretServiceSession::KeyringTrouble& problem) {
        return problem.trouble;
    }
}

Keyring::Failure SecretServiceKeyring::erase(const Item& item, std::stop_token stop) {
    try {
        SecretServiceSession session(item, deadline_, stop);
        for (const auto& found : session.searchUnlocked(Ask::yes)) session.erase(found.get());
        return session.search().empty() ? std::nullopt : Failure(unconfirmed());
    } catch (const SecretServiceSession::KeyringTrouble& problem) {
        return problem.trouble;
    }
}

}
