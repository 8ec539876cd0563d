#include "DravelKit/GoogleAuth/SecretServiceVisit.h"

#include <algorithm>

namespace dravel {

namespace {

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

SecretServiceVisit::SecretServiceVisit(const Keyring::Item& item, std::chrono::milliseconds time,
                                       const std::stop_token& stop)
    : stop_(stop), deadline_(time, stop),
      attributes_(secret_attributes_build(&schema(), "service", item.service.c_str(), "account", item.account.c_str(),
                                          nullptr)) {
    open();
}

SecretServiceVisit::~SecretServiceVisit() = default;

SecretServiceVisit::KeyringTrouble SecretServiceVisit::trouble(const std::string& otherwise) const {
    if (stop_.stop_requested()) return {{.reason = "opération interrompue"}};
    if (deadline_.passed()) return {{.reason = "le trousseau de clés ne répond pas"}};
    return {{.reason = otherwise}};
}

void SecretServiceVisit::check(GError* raw, const char* otherwise) const {
    const Glib<GError> error(raw);
    if (!error) return;
    const bool isLocked = g_error_matches(error.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED);
    throw trouble(isLocked ? locked : otherwise);
}

void SecretServiceVisit::open() {
    GError* error = nullptr;
    const Glib<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, deadline_.cancellable(), &error));
    check(error, noKeyring);
    // The death of the bus ends a visit, not the program. It may come while the service is being opened.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    service_.reset(secret_service_open_sync(dravel_secret_service_get_type(), nullptr, SECRET_SERVICE_OPEN_SESSION,
                                            deadline_.cancellable(), &error));
    check(error, noKeyring);
    g_object_set_data(G_OBJECT(service_.get()), deadlineKey, &deadline_);
}

SecretServiceVisit::Items SecretServiceVisit::search() {
    GError* error = nullptr;
    const Glib<GList> found(secret_service_search_sync(service_.get(), &schema(), attributes_.get(), SECRET_SEARCH_ALL,
                                                       deadline_.cancellable(), &error));
    check(error, refused);
    Items items;
    for (GList* node = found.get(); node != nullptr; node = node->next) items.emplace_back(SECRET_ITEM(node->data));
    return items;
}

Glib<SecretCollection> SecretServiceVisit::defaultCollection() {
    GError* error = nullptr;
    Glib<SecretCollection> collection(secret_collection_for_alias_sync(
        service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, deadline_.cancellable(), &error));
    check(error, refused);
    return collection;
}

void SecretServiceVisit::unlock(GDBusProxy* object, Keyring::Ask ask) {
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

SecretServiceVisit::Items SecretServiceVisit::searchUnlocked(Keyring::Ask ask) {
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

Secret SecretServiceVisit::secretOf(SecretItem* item) {
    GError* error = nullptr;
    secret_item_load_secret_sync(item, deadline_.cancellable(), &error);
    check(error, refused);
    const Glib<SecretValue> value(secret_item_get_secret(item));
    if (!value) throw trouble(locked);
    gsize length = 0;
    const char* bytes = secret_value_get(value.get(), &length);
    return Secret(std::string(bytes, length));
}

void SecretServiceVisit::store(const std::string& label, const Secret& secret) {
    const auto& text = secret.reveal();
    const Glib<SecretValue> value(secret_value_new(text.data(), static_cast<gssize>(text.size()), "text/plain"));
    GError* error = nullptr;
    secret_service_store_sync(service_.get(), &schema(), attributes_.get(), SECRET_COLLECTION_DEFAULT, label.c_str(),
                              value.get(), deadline_.cancellable(), &error);
    check(error, refused);
}

void SecretServiceVisit::erase(SecretItem* item) {
    GError* error = nullptr;
    secret_item_delete_sync(item, deadline_.cancellable(), &error);
    check(error, refused);
}

}
