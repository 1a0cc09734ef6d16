/* Statuses, the port descriptor, and the calls that work on whichever link it opened. */
#ifndef GWQ_FRAME_PORT_H
#define GWQ_FRAME_PORT_H

#include <stdint.h>

#include <gwq/export.h>
#include <gwq/links/end_of_read.h>
#include <gwq/status_codes.h>

GWQ_C_BEGIN

/* Values of nLinkType. */
enum GwqLinkType {
  GWQ_LINK_USB = 0,   /* links/usb_hid.h */
  GWQ_LINK_SERIAL = 1 /* links/serial.h */
};

/* Describes the link to open. Clear it whole before filling it. */
typedef struct TransMssionLinux_t {
  int32_t nHead;             /* a marker, 170; no link reads it */
  int32_t nLinkType;         /* enum GwqLinkType; any other value selects no link */
  int32_t nReserved;         /* 0 */
  int32_t nPid;              /* USB: product id */
  int32_t nVid;              /* USB: vendor id */
  int32_t nPortIndex;        /* serial: port number minus 1; informational */
  int32_t nBaud;             /* serial: bits per second */
  char szTtyName[136];       /* serial: device path, NUL-terminated */
  int32_t nParam;            /* kept beside the others, never read */
  int32_t nTimeOut;          /* read time-out in whole seconds */
  GwqEndOfRead pfnEndOfRead; /* end-of-answer predicate, or NULL */
  char szReserved[840];      /* cleared with the rest, never read */
} TransMssionLinux_t;

/* Opens the link that the descriptor names. Only success makes it the link that the calls below use, with
 * the descriptor's time-out and predicate; after a failure they go on using the one before.
 * Returns the link's status (links/serial.h, links/usb_hid.h), -1 for an unknown link type or NULL.
 * Each of these calls exists under two names that behave alike. Those below return -1 as well when the link
 * in use is of an unknown type, as ICC_ChangeTermParam and SetBackUpParam can make it.
 *   port  in; NULL gives -1 */
GWQ_API int ICC_OpenTransPort(TransMssionLinux_t* port);
GWQ_API int ICC_OpenLinuxTransPort(TransMssionLinux_t* port);

/* Writes on the link in use.
 *   data    in; `length` bytes
 *   length  how many
 * Returns the bytes written or the link's failure. */
GWQ_API int ICC_WriteDataToTransPort(unsigned char* data, int length);
GWQ_API int ICC_WriteDataToLinuxTransPort(unsigned char* data, int length);

/* Reads on the link in use, with the time-out and predicate it was opened with.
 *   buffer   out; `maximum` + 1023 bytes, and 1024 at least
 *   maximum  count that ends the read
 * Returns the bytes received or the link's failure; what arrived before a failure stands in the buffer. */
GWQ_API int ICC_ReadDataFromTransPort(unsigned char* buffer, int maximum);
GWQ_API int ICC_ReadDataFromLinuxTransPort(unsigned char* buffer, int maximum);

/* Closes the link in use; which link that is stays remembered. Returns 0. */
GWQ_API int ICC_CloseTransPort(void);
GWQ_API int ICC_CloseLinuxTransPort(void);

/* Makes a read on the link in use give up. Returns 0, or -7 if it is not open. Any thread; never waits. */
GWQ_API int ICC_CancelReadTransPort(void);
GWQ_API int ICC_CancelReadLinuxTransPort(void);

/* Takes link type, time-out, predicate and parameter from the descriptor without opening or closing
 * anything.
 *   port  in; NULL changes nothing
 * Returns 0 always. */
GWQ_API int ICC_ChangeTermParam(TransMssionLinux_t* port);
GWQ_API int ICC_ChangeLinuxTermParam(TransMssionLinux_t* port);

/* Copies the descriptor's leading bytes over the remembered parameters as raw memory, field boundaries
 * disregarded: bytes 0-3 become the time-out, 8-15 the predicate, 16-19 the link type, 20-23 the parameter.
 *   port  in; NULL changes nothing */
GWQ_API void SetBackUpParam(TransMssionLinux_t* port);

/* Writes on the link in use.
 *   len   count of bytes
 *   data  in; `len` bytes
 * Returns 0, or -10 if fewer bytes were written. */
GWQ_API int WriteData(int len, unsigned char* data);

GWQ_C_END

#endif
