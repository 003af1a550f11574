/* A pure C program against the installed library: a thread, a queue, the log.
 * SPDX-License-Identifier: MIT */
#include "zt/base.h"

ZT_LOGGING_CATEGORY_DEFINE(consumer, ZT_LOG_LEVEL_INFO);

static int32_t put(zt_thread_t *self, void *queue) {
    static int item = 41;
    return zt_queue_add_tail(queue, &item, self != NULL ? -1 : 0) == ZT_STATUS_SUCCESS;
}

int main(void) {
    zt_queue_t queue;
    zt_thread_t thread;
    int32_t result;
    if (zt_queue_create(&queue, 1) != ZT_STATUS_SUCCESS) return 1;
    if (zt_thread_create_and_run(&thread, 3, put, &queue, "putter") != ZT_STATUS_SUCCESS) return 2;
    const int *item = zt_queue_get_head(&queue, -1);
    if (zt_thread_wait_and_destory(&thread, &result) != ZT_STATUS_SUCCESS) return 3;
    ZT_LOG_INFO(consumer, "C consumer: %s", zt_get_status_string(0));
    const int sum = *item + result;
    zt_queue_destroy(&queue);
    return sum != 42;
}
