/* A pure C program against the installed library: one call into each layer.
 * SPDX-License-Identifier: MIT */
#include <stdio.h>
#include <string.h>

#include "zt/base.h"

ZT_LOGGING_CATEGORY_DEFINE(consumer, ZT_LOG_LEVEL_INFO);

static int32_t put_three(zt_thread_t *self, void *queue) {
    static int items[3] = {1, 2, 3};
    (void)self;
    for (int i = 0; i < 3; ++i) {
        if (zt_queue_add_tail((zt_queue_t *)queue, &items[i], -1) != ZT_STATUS_SUCCESS) return 1;
    }
    return 42;
}

int main(void) {
    zt_queue_t queue;
    zt_thread_t thread = NULL;
    int32_t result = 0;
    int sum = 0;

    if (strcmp(zt_base_version, "Version: 0.4.203 76bcd9b") != 0) return 1;
    if (zt_queue_create(&queue, 1) != ZT_STATUS_SUCCESS) return 2;
    if (zt_thread_create_and_run(&thread, 3, put_three, &queue, "putter") != 0) return 3;
    for (int i = 0; i < 3; ++i) sum += *(int *)zt_queue_get_head(&queue, -1);
    if (zt_thread_wait_and_destory(&thread, &result) != 0 || result != 42 || sum != 6) return 4;
    zt_queue_destroy(&queue);
    ZT_LOG_DEBUG(consumer, "never seen: %d", sum);
    ZT_LOG_INFO(consumer, "C consumer: %s, sum %d", zt_get_status_string(0), sum);
    return 0;
}
