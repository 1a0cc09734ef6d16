/* The checkout screen, on USB. */
#ifndef GWQ_SCREENS_CHECKOUT_H
#define GWQ_SCREENS_CHECKOUT_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Shows two texts and returns what the customer answers; the host waits 3 s longer than the customer has.
 *   ignored1, ignored2  ignored
 *   iBaudRate           accepted; USB has none
 *   iTimeout            1 to 999 seconds
 *   szFirstText         in; of any length; not NULL, not empty
 *   szSecondText        in; of any length; not NULL
 *   szResult            out; the answer's text and a terminator, at most 2046 bytes; untouched on failure; not NULL
 * Returns 0; -1 an argument is out of range, nothing was sent; -2 the customer's time ran out, or nothing was read;
 * -3 the link could not be opened; -14 the terminal refused; -23 the customer, or CancelRead, cancelled; -24 out of
 * memory, or a text of more than 256 MiB; -10, -11 the exchange failed (frame/transaction.h).
 * Memory grows with the texts: about six times their size. One thread at a time. */
GWQ_API int MP_CheckOut_All(void* ignored1, void* ignored2, int iBaudRate, int iTimeout,
                            const char* szFirstText, const char* szSecondText, char* szResult);

GWQ_C_END

#endif
