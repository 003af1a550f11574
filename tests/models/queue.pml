/* The queue's waits and wake-ups for the model checker spin: nobody sleeps for ever who could go on.
 * What src/container/queue.cpp and queue_waiters.cpp do for calls without a time limit, step by step.
 * SPDX-License-Identifier: MIT
 *
 * An event is a counter that one waiter takes whole while the others sleep on inside the kernel; that
 * it is set is all that counts. What happens under the queue's lock is one atomic step; the setting of
 * events, the sleeps and their reads are steps of their own.
 *
 * -DHAND_OVER   who waited and leaves sets its event again when there is more for others, as the library
 *               does; without it wake-ups are lost
 * -DCANCEL      at any time there is a decommit with cancel and, perhaps at once, a commit
 * -DNO_GIVE_WAY newcomers sleep on an event that threads released by a cancel still need
 * -DPRODUCERS -DCONSUMERS -DOPERATIONS (of each) -DCAPACITY
 */

#ifndef OPERATIONS
#define OPERATIONS 2
#endif
#define THREADS (PRODUCERS + CONSUMERS)
#define PRODUCER 0
#define CONSUMER 1

bool event[2];          /* by who waits on it: space_event, avail_event */
byte nodes[2];          /* by who can take them: free ones, items */
byte marked[2];         /* blocked threads that a cancel has released, by side */
bool canceled;
bool blocked[THREADS];  /* on the list of waiters */
bool released[THREADS]; /* marked there by a cancel */

proctype thread(bool side; byte self) {
    byte left = OPERATIONS;
    bool waits, took, pass_on, give_way;

    do
    :: left == 0 -> break
    :: left > 0 ->
        atomic {
            left--; waits = false; took = false; pass_on = false; give_way = false;
            if
            :: nodes[side] > 0 -> nodes[side]--; nodes[1 - side]++; took = true
            :: nodes[side] == 0 && canceled -> skip
            :: nodes[side] == 0 && !canceled -> waits = true; blocked[self] = true; give_way = marked[side] > 0
            fi
        }
        do
        :: !waits -> break
        :: waits ->
            if
            :: give_way -> event[side] = true  /* and a nap elsewhere */
            :: !give_way ->
                event[side];                   /* poll returns, for everybody */
                event[side] = false            /* read: perhaps another was faster, which is not looked at */
            fi;
            atomic {
                if
                :: nodes[side] == 0 && !released[self] -> give_way = marked[side] > 0
                :: else ->
                    waits = false; blocked[self] = false;
                    if
                    :: released[self] -> released[self] = false; marked[side]--
                    :: else
                    fi;
                    if
                    :: nodes[side] > 0 ->
                        pass_on = nodes[side] > 1 || marked[side] > 0;
                        nodes[side]--; nodes[1 - side]++; took = true
                    :: else -> pass_on = marked[side] > 0
                    fi
                fi
#ifdef NO_GIVE_WAY
                ; give_way = false
#endif
            }
        od;
#ifdef HAND_OVER
        if
        :: pass_on -> event[side] = true
        :: else
        fi;
#endif
        if
        :: took -> event[1 - side] = true
        :: else
        fi
    od
}

inline drop_nodes(capacity) {
    nodes[PRODUCER] = capacity; nodes[CONSUMER] = 0
}

/* Cancels once and gives the nodes back. */
proctype application() {
#ifdef CANCEL
    byte i;
    bool wake;
    atomic {
        drop_nodes(0);
        canceled = true;
        for (i : 0 .. THREADS - 1) {
            if
            :: blocked[i] && !released[i] -> released[i] = true; marked[(i < PRODUCERS -> PRODUCER : CONSUMER)]++
            :: else
            fi
        }
        i = 0
    }
    event[CONSUMER] = true;
    event[PRODUCER] = true;
    atomic {
        drop_nodes(CAPACITY);
        canceled = false;
        for (i : 0 .. PRODUCERS - 1) { wake = wake || blocked[i] }
        i = 0
    }
    if
    :: wake -> event[PRODUCER] = true
    :: else
    fi
#else
    skip
#endif
}

/* When nobody can take a step any more, only those are asleep who have nothing to go on with. */
proctype judge() {
    byte i;
    timeout;
    for (i : 0 .. THREADS - 1) {
        assert(!blocked[i] || (!released[i] && nodes[(i < PRODUCERS -> PRODUCER : CONSUMER)] == 0))
    }
}

init {
    byte i;
    atomic {
        nodes[PRODUCER] = CAPACITY;
        for (i : 0 .. THREADS - 1) { run thread((i < PRODUCERS -> PRODUCER : CONSUMER), i) }
        run application();
        run judge()
    }
}
