/* zt/numeric.h - sine and cosine of whole degrees, and the greatest common divisor.
 *
 * SPDX-License-Identifier: MIT
 *
 * Angles are whole degrees, any signed 16-bit number; there is no interpolation. Sines come to four
 * decimals, as integers in units of 1/10000 or as floats of the same value: zt_sin(1) is 0.0175f,
 * not the nearest float to the true sine. A table look-up after folding the angle in integers, with
 * no floating-point library behind it.
 *
 * Memory   Nothing is allocated.
 * Threads  Safe on any thread; no state.
 * Failure  None.
 */
#ifndef ZT_NUMERIC_H
#define ZT_NUMERIC_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 10000 times the sine, rounded. */
ZT_API ZT_CONST int32_t zt_sin_fixed(int16_t angle);

/* 10000 times the cosine, rounded. */
ZT_API ZT_CONST int32_t zt_cos_fixed(int16_t angle);

/* zt_sin_fixed / 10000 in single precision. */
ZT_API ZT_CONST float zt_sin(int16_t angle);

/* zt_cos_fixed / 10000 in single precision. The cosine of 270 degrees is -0.0f. */
ZT_API ZT_CONST float zt_cos(int16_t angle);

/* The greatest common divisor of a and b, by remainders that truncate as in C. For positive numbers
 * it is positive; otherwise its sign is what the remainders leave: (-4, 6) gives 2, (4, -6) gives
 * -2, (-12, -18) gives -6. With a 0 the result is the other number as it is. Anything and -1, the
 * smallest number included, give -1. O(log of the smaller). */
ZT_API ZT_CONST int32_t zt_gcd(int32_t a, int32_t b);

#ifdef __cplusplus
}
#endif

#endif /* ZT_NUMERIC_H */
