/* What happens when the library is loaded and unloaded, without any call from the host. */
#ifndef GWQ_FRAME_LOAD_H
#define GWQ_FRAME_LOAD_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* The library's version. */
GWQ_API extern const char dllversion[];

/* Run on load: switches the log on if GWQ_LOG.ini beside the library says so (section [Gwq], key Log,
 * a value that begins with "1"), after DelOutTimeLogFile; prints what it found to standard
 * output; initialises libusb's default context. Returns 0. */
GWQ_API int test_init(void);

/* Run on unload: releases libusb's default context. Returns 0. */
GWQ_API int test_deinit(void);

/* libusb_init and libusb_exit on the default context. Return 0 always. */
GWQ_API int ICC_INIT_LIBUSB(void);
GWQ_API int ICC_UINIT_LIBUSB(void);

GWQ_C_END

#endif
