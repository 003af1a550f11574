// Takes the place of the system log in a test program. Include it in one file of the program.
// SPDX-License-Identifier: MIT
#ifndef ZT_TESTS_SUPPORT_SYSLOG_RECORDER_HPP
#define ZT_TESTS_SUPPORT_SYSLOG_RECORDER_HPP

#include <cstdarg>
#include <cstdio>
#include <string>

namespace syslog_recorder {

inline std::string text;                // "<priority>message" of every call, one behind the other
inline void (*on_message)() = nullptr;  // called after each

inline void record(int priority, const char *format, va_list arguments) {
    char message[1024];
    std::vsnprintf(message, sizeof message, format, arguments);
    text += '<' + std::to_string(priority) + '>' + message;
    if (on_message != nullptr) on_message();
}

}  // namespace syslog_recorder

// The second pair is what a fortified build calls.
extern "C" {
void vsyslog(int priority, const char *format, va_list arguments) {
    syslog_recorder::record(priority, format, arguments);
}
void syslog(int priority, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    syslog_recorder::record(priority, format, arguments);
    va_end(arguments);
}
void __vsyslog_chk(int priority, int, const char *format, va_list arguments) {
    syslog_recorder::record(priority, format, arguments);
}
void __syslog_chk(int priority, int, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    syslog_recorder::record(priority, format, arguments);
    va_end(arguments);
}
}

#endif  // ZT_TESTS_SUPPORT_SYSLOG_RECORDER_HPP
