/* The serial link: one open port per process, raw 8N1, no flow control.
 *
 * One thread at a time; ICC_CancelLinuxComRead may come from another. The transaction functions
 * (frame/transaction.h) open and close this link themselves. */
#ifndef GWQ_LINKS_SERIAL_H
#define GWQ_LINKS_SERIAL_H

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/* Opens a serial device and saves its settings. A port that is still open is closed first, its
 * settings left as they are.
 *   path  in; such as "/dev/ttyS0"
 *   baud  300, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200; any other value means 9600
 * Returns 0; -3 if the device cannot be opened; -1 if its settings cannot be read or applied. */
GWQ_API int ICC_OpenLinuxCom(const char* path, int baud);

/* Restores the device's settings and closes it. Returns 0 always. */
GWQ_API int ICC_CloseLinuxCom(void);

/* Writes all bytes. A peer that takes none any more ends it after 5 seconds; a signal does not.
 *   data    in; `length` bytes
 *   length  how many
 * Returns the bytes written, fewer than `length` after an error or that time; -2 for NULL or a length below 1; -5 if
 * no port is open. */
GWQ_API int ICC_WriteLinuxCom(unsigned char* data, int length);

/* Reads until `maximum` bytes are there, the predicate accepts, or the time is over.
 *   buffer     out; `maximum` bytes; no terminator: pass it zeroed if the predicate reads text
 *   maximum    most bytes to read
 *   timeout_s  whole seconds; 0 waits until the clock's second changes
 *   end        predicate, called after every read, also one that brought nothing; NULL reads on
 * Returns the bytes received; -2 not open or NULL buffer; -4 time-out; -6 read error; -23 cancelled.
 * Bytes received before a failure stand in the buffer. */
GWQ_API int ICC_ReadLinuxCom(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/* Makes a read that is waiting in another thread give up; without one it has no effect.
 * Returns 0, or -7 if no port is open. Any thread; never waits. */
GWQ_API int ICC_CancelLinuxComRead(void);

/* Writes until all bytes are out, an error comes, or no byte has gone out for 5 seconds.
 *   data    in; `length` bytes
 *   length  how many
 * Returns the bytes written; -2 if no port is open, for NULL, or a length of 0 or less. */
GWQ_API int SendDataToTransPort(unsigned char* data, int length);

/* Makes an open descriptor the link's own, its settings untouched.
 *   fd  the descriptor; -1 means none */
GWQ_API void SetComFd(int fd);

/* Saves a terminal line's settings and applies the link's own.
 *   fd    its descriptor
 *   baud  as ICC_OpenLinuxCom
 * Returns 0, -1 if they cannot be read or applied, -2 if `fd` is -1. */
GWQ_API int SetComAttr(int fd, int baud);

/* Applies the saved settings.
 *   fd  the line's descriptor
 * Returns 0, -1 if they cannot be applied, -2 if `fd` is -1. */
GWQ_API int RestoreComAttr(int fd);

GWQ_C_END

#endif
