/* The terminal's firmware version, and an end to whatever it is doing; on USB. */
#ifndef GWQ_SCREENS_TERMINAL_CONTROL_H
#define GWQ_SCREENS_TERMINAL_CONTROL_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Reads the firmware's version: a common and a private part. All but the outputs is ignored.
 *   szCommonVersion, szPrivateVersion  out; with a terminator; 2046 bytes each are enough for any answer; untouched on
 *                                      failure; NULL is passed over
 * Returns 0; -3 the link could not be opened; -14 the exchange failed in another way, or the answer does not have two
 * parts; -401 no answer came within a second. One thread at a time. */
GWQ_API int MP_GetFirmwareVersion(void* ignored1, void* ignored2, int ignored3, int ignored4,
                                  char* szCommonVersion, char* szPrivateVersion);

/* Ends a call of another thread that waits for the customer or moves files, at whatever moment of it, and has the terminal
 * close what it shows, once that call has closed its link. Takes 0.6 seconds and what the terminal needs, for whose
 * answer it waits 2 to 3 s: a terminal that was cut off in the middle of a file's packet may not answer. Any thread.
 *   iBaudRate  accepted; USB has none
 * Returns the status of the close command (frame/transaction.h): 0 once the terminal has answered, whatever it
 * answers. */
GWQ_API int MP_CancelCurrentOperation(void* ignored1, void* ignored2, int iBaudRate, int ignored3);

GWQ_C_END

#endif
