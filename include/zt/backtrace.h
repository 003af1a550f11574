/* zt/backtrace.h - call stacks on demand, and a report of fatal signals.
 *
 * SPDX-License-Identifier: MIT
 *
 * A call stack is printed as
 *
 *     *** Thread: worker ***
 *     backtrace() returned 7 addresses
 *     Frame 0:  /usr/lib/libzt_base.so.0(+0x3df7) [0x7f8004995df7]
 *     ...
 *
 * and a crash as
 *
 *     =========>>>Dump stack start<<<=========
 *     signo: 11
 *     (the call stack of the thread that crashed)
 *     =========>>>Dump stack end<<<===========
 *
 * A frame's text is what backtrace_symbols of the C library would give. Functions of a program are
 * named only if it is linked with -rdynamic; addr2line turns the offsets of the others into lines.
 *
 * Memory   Nothing is allocated after the installation. Installing gives the calling thread an
 *          alternate signal stack, which stays for the life of the process.
 * Threads  Install once at program start, before other threads run. The handler runs on the thread
 *          that crashed and prints its stack. Threads that crash at the same time are printed one
 *          after the other; a dump that gets stuck holds the others up for two seconds at most.
 *          zt_backtrace may run on any thread at any time.
 * Failure  Nothing is reported: what cannot be read is left out.
 */
#ifndef ZT_BACKTRACE_H
#define ZT_BACKTRACE_H

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A function like printf, through which every line is written, one call a line. In a crash it runs
 * in the signal handler: it should keep to what is safe there, or accept that a dump of a crash
 * inside what it uses is cut short or, when it waits for a lock that the crashed thread holds,
 * never ends. Its result is ignored. */
typedef int (*zt_backtrace_print_t)(const char *format, ...) ZT_PRINTF(1, 2);

/* Prints the calling thread's name and at most 32 frames of its call stack through the print
 * function that was given to zt_backtrace_segfault; without one to standard output, by stdio and
 * flushed after each line. */
ZT_API void zt_backtrace(void);

/* Handles SIGSEGV, SIGBUS, SIGILL, SIGABRT, SIGFPE and SIGSYS from now on: prints the report, then
 * lets the signal take its default action, which ends the process. print becomes the print
 * function; null leaves the one that is set. Without one the report goes straight to descriptor 1,
 * past stdio's buffers and locks: it comes out also when the crash happened inside malloc or stdio.
 *
 * A stack overflow can be reported only on a thread with an alternate signal stack: the caller of
 * this function and every thread of zt/thread.h have one. A second crash while a thread prints its
 * report ends the process at once. */
ZT_API void zt_backtrace_segfault(zt_backtrace_print_t print);

/* From now on a signal of the six that was sent (by raise, kill, abort and the like) is reported,
 * followed by the line " ====== !!!crashed!!! ======", and then ignored; abort ends the process all
 * the same. A fault of the processor is reported so as well, but then takes its default action:
 * the faulting instruction would only fault again. There is no way back. */
ZT_API void zt_backtrace_enable_noexit(void);

#ifdef __cplusplus
}
#endif

#endif /* ZT_BACKTRACE_H */
