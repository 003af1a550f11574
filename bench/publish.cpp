// Notifications: one that 16 subscribers hear by callback, beside a signal of GLib's with 16 handlers,
// and one among many ids, for the growth. Our hooks lock a reader/writer lock and a mutex, as a service
// with threads has it; zt-unlocked is the same without hooks.
#include <glib-object.h>
#include <pthread.h>

#include "support.hpp"
#include "zt/ntf_mgr.h"

namespace bench {
namespace {

constexpr uint64_t kId = 4711;
constexpr size_t kSubscribers = 16;
uint64_t g_heard;

pthread_rwlock_t g_table_lock = PTHREAD_RWLOCK_INITIALIZER;
pthread_mutex_t g_flags_lock = PTHREAD_MUTEX_INITIALIZER;

constexpr zt_ntf_mgr_ops_t kLocks = {
    [](zt_ntf_mgr_t *) { pthread_rwlock_rdlock(&g_table_lock); },
    [](zt_ntf_mgr_t *) { pthread_rwlock_unlock(&g_table_lock); },
    [](zt_ntf_mgr_t *) { pthread_rwlock_wrlock(&g_table_lock); },
    [](zt_ntf_mgr_t *) { pthread_rwlock_unlock(&g_table_lock); },
    [](zt_ntf_mgr_t *) { pthread_mutex_lock(&g_flags_lock); },
    [](zt_ntf_mgr_t *) { pthread_mutex_unlock(&g_flags_lock); },
};

bool on_notification(zt_ntf_mgr_t *, uint64_t, uint64_t) {
    ++g_heard;
    return true;
}

template <bool kLocked>
struct Ours {
    zt_ntf_mgr_t manager{};
    explicit Ours(size_t count) {
        require(zt_ntf_mgr_init(kLocked ? &kLocks : nullptr, &manager) == 0, "no manager");
        for (size_t i = 0; i < count; ++i) {
            require(zt_ntf_mgr_subscribe(&manager, i, 0, &kId, 1, on_notification) == 0,
                    "no subscription");
        }
    }
    ~Ours() { zt_ntf_mgr_deinit(&manager); }
    void step() {
        const uint64_t before = g_heard;
        zt_ntf_mgr_publish(&manager, kId);
        require(g_heard == before + kSubscribers, "somebody was not told");
    }
};

void on_signal(GObject *, gpointer) { ++g_heard; }

struct Signal {
    GObject *object;
    guint signal;
    explicit Signal(size_t count) {
        static const GType type =
            g_type_register_static_simple(G_TYPE_OBJECT, "BenchObject", sizeof(GObjectClass),
                                          nullptr, sizeof(GObject), nullptr, GTypeFlags(0));
        static const guint id = g_signal_new("published", type, G_SIGNAL_RUN_LAST, 0, nullptr,
                                             nullptr, nullptr, G_TYPE_NONE, 0);
        object = G_OBJECT(g_object_new(type, nullptr));
        signal = id;
        for (size_t i = 0; i < count; ++i) {
            g_signal_connect(object, "published", G_CALLBACK(on_signal), nullptr);
        }
    }
    ~Signal() { g_object_unref(object); }
    void step() {
        const uint64_t before = g_heard;
        g_signal_emit(object, signal, 0);
        require(g_heard == before + kSubscribers, "somebody was not told");
    }
};

// Many ids, each listed once, 50 by a subscriber without a callback.
struct Many {
    static constexpr size_t kEach = 50;
    zt_ntf_mgr_t manager{};
    size_t count;
    Random random;
    explicit Many(size_t ids) : count(ids) {
        require(zt_ntf_mgr_init(nullptr, &manager) == 0, "no manager");
        uint64_t list[kEach];
        for (size_t first = 0; first < count; first += kEach) {
            const size_t some = std::min(kEach, count - first);
            for (size_t i = 0; i < some; ++i) list[i] = first + i;
            require(zt_ntf_mgr_subscribe(&manager, first, 0, list, static_cast<int32_t>(some),
                                         nullptr) == 0,
                    "no subscription");
        }
    }
    ~Many() { zt_ntf_mgr_deinit(&manager); }
    void step() { zt_ntf_mgr_publish(&manager, random.below(count)); }
};

}  // namespace

void add_publish() {
    add_fixture<Ours<true>>("publish/16/zt", kSubscribers);
    add_fixture<Ours<false>>("publish/16/zt-unlocked", kSubscribers);
    add_fixture<Signal>("publish/16/glib", kSubscribers);
    for (size_t count : kGrowth) add_fixture<Many>(name("ntf_ids", count, "zt"), count);
}

}  // namespace bench
