#include "platform/linux/keyring/LibsecretStore.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <libsecret/secret.h>
#include <memory>
#include <unistd.h>

namespace corvane {
namespace {

const SecretSchema kSchema = {"example.corvane.Account",
                              SECRET_SCHEMA_NONE,
                              {{"settings", SECRET_SCHEMA_ATTRIBUTE_STRING}, {nullptr, {}}},
                              0,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr};
constexpr char kLabel[] = "Corvane: the account at the firmware site";

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using Object = std::unique_ptr<T, Unref>;

/// Without one the library would start a bus of its own, which nobody else knows.
bool isThereABus() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return std::getenv("DBUS_SESSION_BUS_ADDRESS") ||
           (folder && ::access((std::string(folder) + "/bus").c_str(), F_OK) == 0);
}

/// Waits for answers from the bus, for all of one call's questions together no longer than its patience, and handles
/// nothing else meanwhile. Threads that the library begins take no signals.
class Call {
public:
    using Start = std::function<void(GCancellable*, GAsyncReadyCallback, gpointer)>;

    Call() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &signals_);
        g_main_context_push_thread_default(context_);
        GSource* alarm = g_timeout_source_new(LibsecretStore::kPatience);
        g_source_set_callback(
            alarm, [](gpointer cancel) { return g_cancellable_cancel(G_CANCELLABLE(cancel)), G_SOURCE_REMOVE; },
            cancel_.get(), nullptr);
        g_source_attach(alarm, context_);
        g_source_unref(alarm);
    }
    ~Call() {
        secret_service_disconnect();  // what it keeps would wait for news in this context
        while (g_main_context_iteration(context_, FALSE)) {
        }  // and is put away there
        g_main_context_pop_thread_default(context_);
        g_main_context_unref(context_);
        pthread_sigmask(SIG_SETMASK, &signals_, nullptr);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// The result, which there always is: that of a call that was cancelled comes at once.
    Object<GAsyncResult> answerTo(const Start& start) {
        GAsyncResult* result = nullptr;
        start(
            cancel_.get(),
            [](GObject*, GAsyncResult* answer, gpointer to) {
                *static_cast<GAsyncResult**>(to) = G_ASYNC_RESULT(g_object_ref(answer));
            },
            &result);
        while (!result) g_main_context_iteration(context_, TRUE);
        return Object<GAsyncResult>(result);
    }

    Object<SecretService> service() {
        const auto got = answerTo([](auto* cancel, auto done, auto to) {
            secret_service_get(SECRET_SERVICE_OPEN_SESSION, cancel, done, to);
        });
        return Object<SecretService>(secret_service_get_finish(got.get(), nullptr));
    }

private:
    sigset_t signals_{};
    GMainContext* context_ = g_main_context_new();
    Object<GCancellable> cancel_{g_cancellable_new()};
};

std::string textOf(SecretItem* item) {
    if (secret_item_get_locked(item)) return {};
    SecretValue* value = secret_item_get_secret(item);
    if (!value) return {};
    const char* text = secret_value_get_text(value);
    std::string secret = text ? text : "";
    secret_value_unref(value);
    return secret;
}

/// Whether there is a default keyring that takes something without asking the user.
bool isOpen(Call& call, SecretService* service) {
    const auto found = call.answerTo([service](auto* cancel, auto done, auto to) {
        secret_collection_for_alias(service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, cancel, done, to);
    });
    const Object<SecretCollection> collection(secret_collection_for_alias_finish(found.get(), nullptr));
    return collection && !secret_collection_get_locked(collection.get());
}

}  // namespace

std::string LibsecretStore::load(const std::string& settingsFile) {
    if (!isThereABus()) return {};
    Call call;
    const auto service = call.service();
    if (!service) return {};
    GHashTable* attributes = secret_attributes_build(&kSchema, "settings", settingsFile.c_str(), nullptr);
    const auto found = call.answerTo([&](auto* cancel, auto done, auto to) {
        secret_service_search(service.get(), &kSchema, attributes, SECRET_SEARCH_LOAD_SECRETS, cancel, done, to);
    });
    g_hash_table_unref(attributes);
    GList* items = secret_service_search_finish(service.get(), found.get(), nullptr);
    auto secret = items ? textOf(SECRET_ITEM(items->data)) : std::string();
    g_list_free_full(items, g_object_unref);
    return secret;
}

bool LibsecretStore::save(const std::string& settingsFile, const std::string& secret) {
    if (!isThereABus()) return false;
    Call call;
    const auto service = call.service();
    if (!service || !isOpen(call, service.get())) return false;
    if (secret.empty()) {
        GError* error = nullptr;
        const auto removed = call.answerTo([&](auto* cancel, auto done, auto to) {
            secret_password_clear(&kSchema, cancel, done, to, "settings", settingsFile.c_str(), nullptr);
        });
        secret_password_clear_finish(removed.get(), &error);
        const bool isRemoved = !error;  // or was never there
        g_clear_error(&error);
        return isRemoved;
    }
    const auto stored = call.answerTo([&](auto* cancel, auto done, auto to) {
        secret_password_store(&kSchema, SECRET_COLLECTION_DEFAULT, kLabel, secret.c_str(), cancel, done, to, "settings",
                              settingsFile.c_str(), nullptr);
    });
    return secret_password_store_finish(stored.get(), nullptr);
}

}  // namespace corvane
