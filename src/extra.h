/* Additions to the interface: what the contract does not have. A host that uses none of them sees no difference.
 *
 * <gwq/gwq.h> does not include this header. */
#ifndef GWQ_EXTRA_H
#define GWQ_EXTRA_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Tells how much room the calling thread's outputs have whose size the contract does not pass: szSignData of MP_SignPDF,
 * MP_SignPDF_Voice and MP_Sign_With_TZG, and pFileData of PN_GetStringBlock (its terminator included). What is longer
 * leaves the output alone, and the call gives GWQ_TOO_SMALL (-24); the file on the host holds it all.
 *   bytes  room of each; 0 is as the contract has it, without a limit
 * Returns 0; GWQ_BAD_ARGUMENT (-1) for a number below 0, which changes nothing. Any thread, for its own calls.
 *
 * Without it a terminal, or a device in its place, decides how much is written to these buffers. */
GWQ_API int GWQ_SetOutputRoom(int bytes);

GWQ_C_END

#endif
