/* A message with answer keys, and a number keyed by the customer.
 *
 * Common arguments
 *   iPortNo    0 USB, n >= 1 serial port n
 *   iBaudRate  bits per second on a serial port
 *   iTimeout   1 to 999 seconds that the customer has
 *
 * Common results
 *   0    success
 *   -1   an argument is out of range; nothing was sent
 *   -2, -3, -10, -11, -23  the exchange failed (frame/transaction.h)
 *
 * Outputs are untouched on failure. Both functions close their screen once they have waited, whatever the outcome.
 * One thread at a time; CancelRead from another thread ends the wait.
 */
#ifndef GWQ_SCREENS_INFORMATION_H
#define GWQ_SCREENS_INFORMATION_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Shows a message and waits for a key; the host waits 3 s longer than the customer has.
 *   szMessage      in; not NULL, not empty; more than 30720 bytes are shown as an empty message
 *   pnKeyPressed   out; 0, 1 or 3 as the terminal's key, 4 for every other answer, key 2 among them; NULL is passed
 *                  over
 * Also -24: out of memory; nothing was sent. */
GWQ_API int GWQ_StartInfo(int iPortNo, int iBaudRate, int iTimeout, const char* szMessage,
                          unsigned int* pnKeyPressed);

/* Lets the customer key a number; the host waits as long as the customer has, without the 3 s more.
 *   iMode    0 or 1, the terminal's entry mode
 *   pOutput  out; what was keyed, no terminator: pass 2046 zeroed bytes; NULL gives -1 */
GWQ_API int GWQ_StartKeyboard(int iPortNo, int iBaudRate, int iTimeout, int iMode, char* pOutput);

GWQ_C_END

#endif
