/* zt/crc.h - cyclic redundancy checks: CRC-16/CCITT, CRC-32, and CRC-32 without inversions.
 *
 * SPDX-License-Identifier: MIT
 *
 * Each takes the running value first and returns the new one: feed a message in pieces by passing the
 * result on. A length of 0 returns the first argument and does not look at data. A CRC finds accidents,
 * not attacks.
 *
 * Memory   Nothing is allocated or kept.
 * Threads  Safe on any thread.
 * Failure  None; data must cover the length.
 */
#ifndef ZT_CRC_H
#define ZT_CRC_H

#include <stdint.h>

#include "zt/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Polynomial 0x1021, most significant bit first, no final inversion. Starting from 0xFFFF this is
 * CRC-16/IBM-3740 ("CCITT-FALSE"), starting from 0 CRC-16/XMODEM. */
ZT_API uint16_t zt_crc16_ccitt(uint16_t crc, const void *data, uint32_t length);

/* CRC-32/ISO-HDLC, the one of Ethernet, gzip and PNG: polynomial 0x04C11DB7 reflected, inverted at both
 * ends. Start from 0. */
ZT_API uint32_t zt_crc32(uint32_t crc, const void *data, uint32_t length);

/* The same polynomial and bit order without the inversions, as the register of an FPGA holds it.
 * Starting from 0xFFFFFFFF this is CRC-32/JAMCRC. */
ZT_API uint32_t zt_fpga_crc32(uint32_t crc, const void *data, uint32_t length);

#ifdef __cplusplus
}
#endif

#endif /* ZT_CRC_H */
