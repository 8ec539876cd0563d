#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"
#include "DravelKit/GoogleAuth/KeyringDeadline.h"

#include <libsecret/secret.h>

#include <memory>
#include <string>
#include <vector>

namespace dravel {

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
class SecretServiceVisit {
  public:
    struct KeyringTrouble {
        Keyring::Trouble trouble;
    };
    using Items = std::vector<Glib<SecretItem>>;

    SecretServiceVisit(const Keyring::Item&, std::chrono::milliseconds, const std::stop_token&);
    ~SecretServiceVisit();

    // Every item with our attributes, in locked collections too.
    Items search();

    // The same; when there is something locked in the way, unlocks it or throws.
    Items searchUnlocked(Keyring::Ask);

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

}
