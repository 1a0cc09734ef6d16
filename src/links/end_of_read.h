/* SPDX-License-Identifier: MIT */
/**
 * @file
 * When the bytes of a read are a complete answer.
 */
#ifndef GWQ_LINKS_END_OF_READ_H
#define GWQ_LINKS_END_OF_READ_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * End-of-answer predicate: gets all bytes read so far and their count, returns 0 when they are a
 * complete answer, anything else to read on.
 */
typedef int (*GwqEndOfRead)(unsigned char* data, int count);

GWQ_C_END

#endif
