/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The auxiliary-port link: the device is connected to the auxiliary port of the text terminal that
 * the process runs on. One open terminal per process.
 *
 * Escape sequences on standard output's terminal switch that port on and off; what is written
 * between them leaves through the port, the answer comes back on the terminal line.
 *
 * @remark One thread at a time; ICC_CancelLinuxAuxRead() may come from another.
 */
#ifndef GWQ_LINKS_AUX_PORT_H
#define GWQ_LINKS_AUX_PORT_H

#include <stdint.h>

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>

GWQ_C_BEGIN

/** The dialect in use, and what goes around each write of ICC_WriteLinuxAux(). */
typedef struct GwqAuxOp {
  int32_t nType;       /**< as given to VK_OpenAuxPort */
  char szPrefix[1024]; /**< goes before what is written */
  int32_t nPrefixLen;  /**< 0 is none; more than 1024 counts as 1024 */
  char szSuffix[1024]; /**< goes after it */
  int32_t nSuffixLen;  /**< as nPrefixLen */
} GwqAuxOp;

/**
 * The dialect in use; filled by VK_OpenAuxPort().
 *
 * @since 1.0.0
 */
GWQ_API extern GwqAuxOp g_AuxOp;

/**
 * Opens standard output's terminal and switches its auxiliary port on.
 *
 * A terminal that is still open is closed first, its settings left as they are. After
 * GWQ_LINK_UNUSABLE the terminal is closed again, and where the port is out of range its settings
 * are restored.
 *
 * @param type  dialect: 1, 2, 3 or 5; any other speaks as 1
 * @param port  1 to 4; higher ones take the dialect's default
 * @param baud  the line's: 300, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200, any other
 *              value means 9600; the auxiliary port's is 9600 where the dialect lacks the speed
 * @param lock  not 0 locks the keyboard meanwhile; dialect 2 never does
 * @retval GWQ_OK             success
 * @retval GWQ_LINK_UNUSABLE  (-1) the terminal's settings cannot be read or applied, or `port` is
 *                            below 1
 * @retval GWQ_NOT_OPENED     (-3) standard output is no terminal, or it cannot be opened
 * @since 1.0.0
 */
GWQ_API int ICC_OpenLinuxAux(int type, int port, int baud, int lock);

/**
 * Switches the auxiliary port off, restores the terminal's settings and closes it.
 *
 * @param lock  not 0 unlocks the keyboard
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int ICC_CloseLinuxAux(int lock);

/**
 * Writes all bytes, between the dialect's prefix and suffix.
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes, at least 1
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `data` is NULL, `length` is below 1, or no terminal is open
 * @return the bytes of `data` written, fewer than `length` after an error
 * @since 1.0.0
 */
GWQ_API int ICC_WriteLinuxAux(unsigned char* data, int length);

/**
 * Reads until `maximum` bytes are there, the predicate accepts, or the time is over.
 *
 * The same as ICC_ReadLinux(): with the log on, every byte is logged; bytes received before a
 * failure stay in the buffer.
 *
 * @param[out] buffer  `maximum` bytes, without a terminator: pass it zeroed if the predicate reads
 *                     text; must not be NULL
 * @param maximum      most bytes to read
 * @param timeout_s    whole seconds; 0 waits until the clock's second changes
 * @param end          predicate, called after every read, also one that read nothing; NULL reads on
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) no terminal is open, or `buffer` is NULL
 * @retval GWQ_LINK_TIMEOUT       (-4) the time is over
 * @retval GWQ_LINK_READ          (-6) reading failed
 * @retval GWQ_LINK_CANCELLED     (-27) cancelled, but only after a sleep of 100000 seconds
 * @return the bytes received
 * @since 1.0.0
 */
GWQ_API int ICC_ReadLinuxAux(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/**
 * Makes a read that is waiting in another thread stop and go into its sleep; without one it has no
 * effect.
 *
 * Any thread; never blocks.
 *
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_NO_DEVICE  (-7) no terminal is open
 * @since 1.0.0
 */
GWQ_API int ICC_CancelLinuxAuxRead(void);

/**
 * Opens a terminal line and saves its settings, without touching its auxiliary port.
 *
 * @param[in] path  device of the line; NULL is GWQ_NOT_OPENED
 * @param baud      300, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200; any other value
 *                  means 9600
 * @retval GWQ_OK             success
 * @retval GWQ_LINK_UNUSABLE  (-1) its settings cannot be read or applied
 * @retval GWQ_NOT_OPENED     (-3) the line cannot be opened
 * @since 1.0.0
 */
GWQ_API int ICC_OpenLinux(const char* path, int baud);

/**
 * Restores the terminal's settings and closes it; its auxiliary port stays as it is.
 *
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int ICC_CloseLinux(void);

/**
 * Writes all bytes, with nothing around them.
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes, at least 1
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `data` is NULL, `length` is below 1, or no terminal is open
 * @return the bytes written, fewer than `length` after an error
 * @since 1.0.0
 */
GWQ_API int ICC_WriteLinux(unsigned char* data, int length);

/**
 * Reads until `maximum` bytes are there, the predicate accepts, or the time is over.
 *
 * With the log on, every byte is logged. Bytes received before a failure stay in the buffer.
 *
 * @param[out] buffer  `maximum` bytes, without a terminator: pass it zeroed if the predicate reads
 *                     text; must not be NULL
 * @param maximum      most bytes to read
 * @param timeout_s    whole seconds; 0 waits until the clock's second changes
 * @param end          predicate, called after every read, also one that read nothing; NULL reads on
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) no terminal is open, or `buffer` is NULL
 * @retval GWQ_LINK_TIMEOUT       (-4) the time is over
 * @retval GWQ_LINK_READ          (-6) reading failed
 * @retval GWQ_LINK_CANCELLED     (-27) cancelled, but only after a sleep of 100000 seconds
 * @return the bytes received
 * @since 1.0.0
 */
GWQ_API int ICC_ReadLinux(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

/**
 * Chooses the dialect and switches the open terminal's auxiliary port on.
 *
 * What is sent is not checked.
 *
 * @param type  dialect: 1, 2, 3 or 5; any other speaks as 1
 * @param port  1 to 4; higher ones take the dialect's default
 * @param baud  the auxiliary port's; 9600 where the dialect lacks the speed
 * @param lock  not 0 locks the keyboard; dialect 2 never does
 * @retval GWQ_OK                 success
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `port` is below 1; nothing was done
 * @since 1.0.0
 */
GWQ_API int VK_OpenAuxPort(int type, int port, int baud, int lock);

/**
 * Switches the auxiliary port off; where the dialect in use is none of 1, 2, 3 and 5, it becomes 1.
 *
 * @param lock  not 0 unlocks the keyboard
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int VK_CloseAuxPort(int lock);

/**
 * Writes until all bytes are out or an error comes.
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes, at least 1
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) no terminal is open, `data` is NULL or `length` is below 1
 * @return the bytes written
 * @since 1.0.0
 */
GWQ_API int VK_SendDataToTransPort(unsigned char* data, int length);

/**
 * Makes an open descriptor the link's own, its settings untouched.
 *
 * @param fd  the descriptor; -1 means none
 * @since 1.0.0
 */
GWQ_API void SetAuxFd(int fd);

/**
 * Discards what has come from the open terminal and was not read yet.
 *
 * @since 1.0.0
 */
GWQ_API void ClearReceiveBuffer(void);

/**
 * Saves a terminal line's settings and applies the link's own.
 *
 * @param fd    the line's descriptor
 * @param baud  300, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200; any other value means
 *              9600
 * @retval GWQ_OK                 success
 * @retval GWQ_LINK_UNUSABLE      (-1) the settings cannot be read or applied
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `fd` is -1
 * @since 1.0.0
 */
GWQ_API int SetTerm(int fd, int baud);

/**
 * Applies the saved settings to a terminal line.
 *
 * @param fd  the line's descriptor
 * @retval GWQ_OK                 success
 * @retval GWQ_LINK_UNUSABLE      (-1) the settings cannot be applied
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `fd` is -1
 * @since 1.0.0
 */
GWQ_API int ResetAux(int fd);

/**
 * Removes every blank, tab, LF and CR from a text.
 *
 * @param[in,out] text  may be NULL: nothing is done
 * @since 1.0.0
 */
GWQ_API void ClearInvisibleCharInStr(char* text);

GWQ_C_END

#endif
