/* The auxiliary-port link: the device hangs off the auxiliary port of the text terminal that the process runs
 * on. Escape sequences on standard output's terminal switch that port on and off; what is written between
 * them leaves through the port, the answer comes back on the terminal line. One open terminal per process.
 *
 * One thread at a time; ICC_CancelLinuxAuxRead may come from another. */
#ifndef GWQ_LINKS_AUX_PORT_H
#define GWQ_LINKS_AUX_PORT_H

#include <stdint.h>

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/* The dialect in use, and what stands around each write of ICC_WriteLinuxAux. */
typedef struct GwqAuxOp {
  int32_t nType;       /* as given to VK_OpenAuxPort */
  char szPrefix[1024]; /* stands before what is written */
  int32_t nPrefixLen;  /* 0 is none; more than 1024 counts as 1024 */
  char szSuffix[1024]; /* stands behind it */
  int32_t nSuffixLen;  /* as nPrefixLen */
} GwqAuxOp;

/* Filled by VK_OpenAuxPort. */
GWQ_API extern GwqAuxOp g_AuxOp;

/* Opens standard output's terminal and switches its auxiliary port on. A terminal that is still open is closed
 * first, its settings left as they are.
 *   type  dialect: 1, 2, 3 or 5; any other speaks as 1
 *   port  1 to 4; higher ones take the dialect's default
 *   baud  the line's as ICC_OpenLinuxCom; the auxiliary port's is 9600 where the dialect lacks the speed
 *   lock  not 0 locks the keyboard meanwhile; dialect 2 never does
 * Returns 0; -3 if standard output is no terminal or it cannot be opened; -1 if its settings cannot be read
 * or applied, or the port is below 1; the terminal is closed again, in the last case with its settings restored. */
GWQ_API int ICC_OpenLinuxAux(int type, int port, int baud, int lock);

/* Switches the auxiliary port off, restores the terminal's settings and closes it.
 *   lock  not 0 unlocks the keyboard
 * Returns 0 always. */
GWQ_API int ICC_CloseLinuxAux(int lock);

/* Writes all bytes, between the dialect's prefix and suffix.
 *   data    in; `length` bytes
 *   length  how many
 * Returns the bytes of `data` written, fewer than `length` after an error; -2 for NULL, a length below 1, or
 * if no terminal is open. */
GWQ_API int ICC_WriteLinuxAux(unsigned char* data, int length);

/* Reads as ICC_ReadLinux does.
 *   buffer     out; `maximum` bytes; no terminator: pass it zeroed if the predicate reads text
 *   maximum    most bytes to read
 *   timeout_s  whole seconds; 0 waits until the clock's second changes
 *   end        predicate; NULL reads on
 * Returns what ICC_ReadLinux returns. */
GWQ_API int ICC_ReadLinuxAux(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/* Makes a read that is waiting in another thread stop and go into its sleep; without one it has no effect.
 * Returns 0, or -7 if no terminal is open. Any thread; never waits. */
GWQ_API int ICC_CancelLinuxAuxRead(void);

/* Opens a terminal line and saves its settings, without touching its auxiliary port.
 *   path  in; NULL gives -3
 *   baud  as ICC_OpenLinuxCom
 * Returns 0; -3 if it cannot be opened; -1 if its settings cannot be read or applied. */
GWQ_API int ICC_OpenLinux(const char* path, int baud);

/* Restores the terminal's settings and closes it, its auxiliary port as it is. Returns 0 always. */
GWQ_API int ICC_CloseLinux(void);

/* Writes all bytes, with nothing around them.
 *   data    in; `length` bytes
 *   length  how many
 * Returns the bytes written, fewer than `length` after an error; -2 for NULL, a length below 1, or if no
 * terminal is open. */
GWQ_API int ICC_WriteLinux(unsigned char* data, int length);

/* Reads until `maximum` bytes are there, the predicate accepts, or the time is over. With the log on, every
 * byte is logged.
 *   buffer     out; `maximum` bytes; no terminator: pass it zeroed if the predicate reads text
 *   maximum    most bytes to read
 *   timeout_s  whole seconds; 0 waits until the clock's second changes
 *   end        predicate, called after every read, also one that brought nothing; NULL reads on
 * Returns the bytes received; -2 not open or NULL buffer; -4 time-out; -6 read error; -27 cancelled, but only
 * after a sleep of 100000 seconds.
 * Bytes received before a failure stand in the buffer. */
GWQ_API int ICC_ReadLinux(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/* Chooses the dialect and switches the open terminal's auxiliary port on. Arguments as ICC_OpenLinuxAux. What
 * is sent is not checked. Returns 0, or -2 with nothing done if the port is below 1. */
GWQ_API int VK_OpenAuxPort(int type, int port, int baud, int lock);

/* Switches the auxiliary port off; where the dialect in use is none of 1, 2, 3 and 5, it becomes 1.
 *   lock  not 0 unlocks the keyboard
 * Returns 0 always. */
GWQ_API int VK_CloseAuxPort(int lock);

/* Writes until all bytes are out or an error comes.
 *   data    in; `length` bytes
 *   length  how many
 * Returns the bytes written; -2 if no terminal is open, for NULL, or a length of 0 or less. */
GWQ_API int VK_SendDataToTransPort(unsigned char* data, int length);

/* Makes an open descriptor the link's own, its settings untouched.
 *   fd  the descriptor; -1 means none */
GWQ_API void SetAuxFd(int fd);

/* Discards what has come from the open terminal and was not read yet. */
GWQ_API void ClearReceiveBuffer(void);

/* Saves a terminal line's settings and applies the link's own.
 *   fd    its descriptor
 *   baud  as ICC_OpenLinuxCom
 * Returns 0, -1 if they cannot be read or
 * applied, -2 if `fd` is -1. */
GWQ_API int SetTerm(int fd, int baud);

/* Applies the saved settings.
 *   fd  the line's descriptor
 * Returns 0, -1 if they cannot be applied, -2 if `fd` is -1. */
GWQ_API int ResetAux(int fd);

/* Removes every blank, tab, LF and CR.
 *   text  in and out; NULL is left alone */
GWQ_API void ClearInvisibleCharInStr(char* text);

GWQ_C_END

#endif
