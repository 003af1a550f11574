/* One record of each kind in a known state, for scripts/gates/gdb.sh to print. Stops in done().
 * SPDX-License-Identifier: MIT */
#include "zt/base.h"

typedef struct row_t {
    zt_rbtree_node_t node;
    zt_heap_node_t heap_node;
    zt_list_head_t link;
    int key;
} row_t;

static zt_list_head_t list = ZT_LIST_HEAD_INIT(list), torn = ZT_LIST_HEAD_INIT(torn), unset;
static zt_queue_t queue;
static zt_ring_buf_t ring;
static zt_rbtree_t tree;
static zt_heap_t heap;
static zt_id_pool_t pool;
static zt_mem_heap_t region;
static zt_watchdog_mgr_t dogs = ZT_WATCHDOG_MGR_INIT(dogs, NULL);
static zt_watchdog_t dog = {.name = "encoder"};
static zt_ntf_mgr_t news, no_news;
static zt_ptz_t ptz;
static zt_mutex_t held;
static zt_thread_t worker;
static zt_status_t status = ZT_STATUS_TIMEOUT, own = -7;
static row_t rows[3];

static int32_t by_key(zt_rbtree_node_t *a, zt_rbtree_node_t *b) {
    return ((row_t *)a)->key - ((row_t *)b)->key;
}
static int32_t less(zt_heap_node_t *a, zt_heap_node_t *b) { return a < b; }
static void wake(zt_ptz_t *channel) { (void)channel; }
static zt_status_t keep(zt_ptz_t *channel, zt_ptz_capability_t *capability) {
    (void)channel;
    (void)capability;
    return ZT_STATUS_SUCCESS;
}
void done(void);
void done(void) {}

static int fill(void) {
    static uint8_t bytes[16];
    static char lines[] = "line";
    int32_t id = 70;
    uint32_t seq, client;
    zt_ptz_internal_param_t param;
    const uint64_t ids[] = {11, 12};
    const zt_ntf_mgr_ops_t ops = {0};
    static const zt_status_entry_t extra[] = {{-7, "LensCap", "The lens cap is on"}};
    int bad = 0;
    zt_status_extend_register(extra, 1);
    bad |= zt_queue_create(&queue, 4) | zt_queue_add_tail(&queue, lines, 0) |
           zt_queue_add_tail(&queue, bytes, 0);
    zt_ring_buf_init(&ring, 16, bytes);
    bad |= zt_ring_buf_put(&ring, bytes, 5) != 5;
    tree.compare = by_key;
    for (int i = 0; i < 3; ++i) {
        rows[i].key = i;
        zt_rbtree_insert(&tree, &rows[i].node);
        zt_heap_insert(&heap, &rows[i].heap_node, less);
    }
    list.next = list.prev = &rows[0].link;
    rows[0].link.next = rows[0].link.prev = &list;
    torn.next = &rows[1].link;
    bad |= zt_id_pool_create(&pool, 4) | zt_id_pool_alloc_specific(&pool, lines, &id);
    bad |=
        zt_mem_heap_create(&region, 0x10000, 4096, 64) | (zt_mem_heap_alloc(&region, 100) == NULL);
    bad |= zt_watchdog_mgr_create(&dogs, NULL);
    dog.next = dog.prev = &dog.link;
    bad |= zt_watchdog_register(&dogs, &dog, 3, 500);
    bad |= zt_ntf_mgr_init(&ops, &news) | zt_ntf_mgr_subscribe(&news, 5, 1, ids, 2, NULL) |
           zt_ntf_mgr_publish(&news, 12);
    zt_ptz_init(&ptz);
    ptz.init_capability = keep;
    ptz.command_ready = ptz.release = wake;
    zt_ptz_internal_get_default_param(&param);
    bad |= zt_ptz_internal_create(&ptz, &param) |
           zt_ptz_register(&ptz, &client, "joystick", NULL, NULL);
    bad |= zt_ptz_send_command(&ptz, client, 0x2, NULL, &seq);
    bad |= zt_mutex_init(&held) | zt_mutex_lock(&held) | zt_mutex_lock(&held);
    bad |= zt_thread_create_and_run(&worker, 2, NULL, NULL, "worker");
    return bad;
}

int main(void) {
    const int bad = fill();
    done();
    return bad + (int)(status + own);
}
