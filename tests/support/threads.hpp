// Runs the same code on several threads at once.
// SPDX-License-Identifier: MIT
#ifndef ZT_TESTS_SUPPORT_THREADS_HPP
#define ZT_TESTS_SUPPORT_THREADS_HPP

#include <pthread.h>

#include <string>
#include <thread>
#include <vector>

// Calls body(0) to body(count - 1), each on a thread of its own, and waits for all of them.
template <typename Body>
void on_threads(int count, Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
    for (std::thread &thread : threads) thread.join();
}

// The calling thread's name: in an emulator not that of the program.
inline std::string own_name() {
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    return name;
}

#endif  // ZT_TESTS_SUPPORT_THREADS_HPP
