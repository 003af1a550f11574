// Runs the same code on several threads at once.
// SPDX-License-Identifier: MIT
#ifndef ZT_TESTS_SUPPORT_THREADS_HPP
#define ZT_TESTS_SUPPORT_THREADS_HPP

#include <thread>
#include <vector>

// Calls body(0) to body(count - 1), each on a thread of its own, and waits for all of them.
template <typename Body>
void on_threads(int count, Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
    for (std::thread &thread : threads) thread.join();
}

#endif  // ZT_TESTS_SUPPORT_THREADS_HPP
