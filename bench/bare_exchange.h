// SPDX-License-Identifier: MIT
/* An exchange with the terminal as one would write it by hand, without checks: the limit for the
 * library's. */
#ifndef GWQ_BENCH_BARE_EXCHANGE_H
#define GWQ_BENCH_BARE_EXCHANGE_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { BARE_REPORT = 1024 };

/* Enumerates, opens, claims, writes one report, reads one, closes. Returns the bytes read, or -1. */
int BareExchange(int vid, int pid, const char* command, char answer[BARE_REPORT]);

/* Opens once, then writes each packet in reports and reads the answer to it. Returns 0, or -1. */
typedef struct BarePacket {
  const unsigned char* bytes; /* whole reports */
  size_t reports;
} BarePacket;
int BarePush(int vid, int pid, const BarePacket* packets, size_t count);

#ifdef __cplusplus
}
#endif

#endif
