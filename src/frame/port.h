/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The port descriptor, and the calls that work on the link that it opened, of either type.
 *
 * Each call exists under two names that behave alike.
 *
 * @remark One thread at a time, except ICC_CancelReadTransPort().
 */
#ifndef GWQ_FRAME_PORT_H
#define GWQ_FRAME_PORT_H

#include <stdint.h>

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>
#include <gwq/status_codes.h>

GWQ_C_BEGIN

/** Values of TransMssionLinux_t::nLinkType. */
enum GwqLinkType {
  GWQ_LINK_USB = 0,   /**< links/usb_hid.h */
  GWQ_LINK_SERIAL = 1 /**< links/serial.h */
};

/** Describes the link to open. Clear it whole before filling it. */
typedef struct TransMssionLinux_t {
  int32_t nHead;             /**< a marker, 170; no link reads it */
  int32_t nLinkType;         /**< enum GwqLinkType; any other value selects no link */
  int32_t nReserved;         /**< 0 */
  int32_t nPid;              /**< USB: product id */
  int32_t nVid;              /**< USB: vendor id */
  int32_t nPortIndex;        /**< serial: port number minus 1; informational */
  int32_t nBaud;             /**< serial: bits per second */
  char szTtyName[136];       /**< serial: device path, NUL-terminated */
  int32_t nParam;            /**< kept with the others, never read */
  int32_t nTimeOut;          /**< read time-out in whole seconds */
  GwqEndOfRead pfnEndOfRead; /**< end-of-answer predicate, or NULL */
  char szReserved[840];      /**< cleared with the rest, never read */
} TransMssionLinux_t;

/**
 * Opens the link that the descriptor names.
 *
 * Only success makes it the link that the other calls use, with the descriptor's time-out and
 * predicate; after a failure they go on using the one before.
 *
 * @param[in] port  must not be NULL
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_UNUSABLE   (-1) unknown link type, `port` is NULL, or a serial device's settings
 *                             cannot be read or applied
 * @retval GWQ_NOT_OPENED      (-3) the device cannot be opened or claimed
 * @retval GWQ_LINK_NO_DEVICE  (-7) there is no such USB device
 * @since 1.0.0
 */
GWQ_API int ICC_OpenTransPort(TransMssionLinux_t* port);

/**
 * Opens the link that the descriptor names.
 *
 * Only success makes it the link that the other calls use, with the descriptor's time-out and
 * predicate; after a failure they go on using the one before.
 *
 * The same as ICC_OpenTransPort().
 *
 * @param[in] port  must not be NULL
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_UNUSABLE   (-1) unknown link type, `port` is NULL, or a serial device's settings
 *                             cannot be read or applied
 * @retval GWQ_NOT_OPENED      (-3) the device cannot be opened or claimed
 * @retval GWQ_LINK_NO_DEVICE  (-7) there is no such USB device
 * @since 1.0.0
 */
GWQ_API int ICC_OpenLinuxTransPort(TransMssionLinux_t* port);

/**
 * Writes on the link in use and returns the number of bytes written.
 *
 * On a serial link a peer that takes no more bytes ends it after the descriptor's time-out.
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes
 * @retval GWQ_LINK_UNUSABLE      (-1) the link in use is of an unknown type
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) serial: `data` is NULL or `length` is below 1
 * @retval GWQ_LINK_WRITE         (-5) USB: not all bytes went out; serial: no port is open
 * @retval GWQ_LINK_NO_DEVICE     (-7) USB: no device is open
 * @return the bytes written; on a serial link fewer than `length` after an error or that time
 * @since 1.0.0
 */
GWQ_API int ICC_WriteDataToTransPort(unsigned char* data, int length);

/**
 * Writes on the link in use and returns the number of bytes written.
 *
 * On a serial link a peer that takes no more bytes ends it after the descriptor's time-out.
 *
 * The same as ICC_WriteDataToTransPort().
 *
 * @param[in] data  `length` bytes; must not be NULL
 * @param length    number of bytes
 * @retval GWQ_LINK_UNUSABLE      (-1) the link in use is of an unknown type
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) serial: `data` is NULL or `length` is below 1
 * @retval GWQ_LINK_WRITE         (-5) USB: not all bytes went out; serial: no port is open
 * @retval GWQ_LINK_NO_DEVICE     (-7) USB: no device is open
 * @return the bytes written; on a serial link fewer than `length` after an error or that time
 * @since 1.0.0
 */
GWQ_API int ICC_WriteDataToLinuxTransPort(unsigned char* data, int length);

/**
 * Reads on the link in use, with the time-out and predicate it was opened with, and returns the
 * number of bytes.
 *
 * Bytes received before a failure stay in the buffer.
 *
 * @param[out] buffer  `maximum` + 1023 bytes, and 1024 at least; must not be NULL
 * @param maximum      count that ends the read
 * @retval GWQ_LINK_UNUSABLE      (-1) the link in use is of an unknown type
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `buffer` is NULL; serial: no port is open
 * @retval GWQ_LINK_TIMEOUT       (-4) the time is over; USB: also when no device is open
 * @retval GWQ_LINK_READ          (-6) serial: reading failed
 * @retval GWQ_CANCELLED          (-23) serial: cancelled
 * @retval GWQ_LINK_CANCELLED     (-27) USB: cancelled
 * @return the bytes received
 * @since 1.0.0
 */
GWQ_API int ICC_ReadDataFromTransPort(unsigned char* buffer, int maximum);

/**
 * Reads on the link in use, with the time-out and predicate it was opened with, and returns the
 * number of bytes.
 *
 * Bytes received before a failure stay in the buffer.
 *
 * The same as ICC_ReadDataFromTransPort().
 *
 * @param[out] buffer  `maximum` + 1023 bytes, and 1024 at least; must not be NULL
 * @param maximum      count that ends the read
 * @retval GWQ_LINK_UNUSABLE      (-1) the link in use is of an unknown type
 * @retval GWQ_LINK_BAD_ARGUMENT  (-2) `buffer` is NULL; serial: no port is open
 * @retval GWQ_LINK_TIMEOUT       (-4) the time is over; USB: also when no device is open
 * @retval GWQ_LINK_READ          (-6) serial: reading failed
 * @retval GWQ_CANCELLED          (-23) serial: cancelled
 * @retval GWQ_LINK_CANCELLED     (-27) USB: cancelled
 * @return the bytes received
 * @since 1.0.0
 */
GWQ_API int ICC_ReadDataFromLinuxTransPort(unsigned char* buffer, int maximum);

/**
 * Closes the link in use; its type stays remembered.
 *
 * @retval GWQ_OK             success
 * @retval GWQ_LINK_UNUSABLE  (-1) the link in use is of an unknown type
 * @since 1.0.0
 */
GWQ_API int ICC_CloseTransPort(void);

/**
 * Closes the link in use; its type stays remembered.
 *
 * The same as ICC_CloseTransPort().
 *
 * @retval GWQ_OK             success
 * @retval GWQ_LINK_UNUSABLE  (-1) the link in use is of an unknown type
 * @since 1.0.0
 */
GWQ_API int ICC_CloseLinuxTransPort(void);

/**
 * Makes a read on the link in use give up.
 *
 * Any thread; never blocks.
 *
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_UNUSABLE   (-1) the link in use is of an unknown type
 * @retval GWQ_LINK_NO_DEVICE  (-7) the link in use is not open
 * @since 1.0.0
 */
GWQ_API int ICC_CancelReadTransPort(void);

/**
 * Makes a read on the link in use give up.
 *
 * Any thread; never blocks.
 *
 * The same as ICC_CancelReadTransPort().
 *
 * @retval GWQ_OK              success
 * @retval GWQ_LINK_UNUSABLE   (-1) the link in use is of an unknown type
 * @retval GWQ_LINK_NO_DEVICE  (-7) the link in use is not open
 * @since 1.0.0
 */
GWQ_API int ICC_CancelReadLinuxTransPort(void);

/**
 * Takes link type, time-out, predicate and parameter from the descriptor without opening or closing
 * anything.
 *
 * @param[in] port  NULL changes nothing
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int ICC_ChangeTermParam(TransMssionLinux_t* port);

/**
 * Takes link type, time-out, predicate and parameter from the descriptor without opening or closing
 * anything.
 *
 * The same as ICC_ChangeTermParam().
 *
 * @param[in] port  NULL changes nothing
 * @retval GWQ_OK  always
 * @since 1.0.0
 */
GWQ_API int ICC_ChangeLinuxTermParam(TransMssionLinux_t* port);

/**
 * Copies the descriptor's leading bytes over the remembered parameters as raw memory, without
 * regard to its fields.
 *
 * Bytes 0-3 become the time-out, 8-15 the predicate, 16-19 the link type, 20-23 the parameter.
 *
 * @param[in] port  NULL changes nothing
 * @since 1.0.0
 */
GWQ_API void SetBackUpParam(TransMssionLinux_t* port);

/**
 * Writes on the link in use and returns whether all bytes were written.
 *
 * @param len       number of bytes
 * @param[in] data  `len` bytes
 * @retval GWQ_OK           success
 * @retval GWQ_SEND_FAILED  (-10) fewer bytes were written
 * @since 1.0.0
 */
GWQ_API int WriteData(int len, unsigned char* data);

GWQ_C_END

#endif
