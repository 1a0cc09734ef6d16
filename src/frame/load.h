/* SPDX-License-Identifier: MIT */
/**
 * @file
 * What happens when the library is loaded and unloaded, without any call from the host.
 */
#ifndef GWQ_FRAME_LOAD_H
#define GWQ_FRAME_LOAD_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * The library's version.
 *
 * @since 1.0.0
 */
GWQ_API extern const char dllversion[];

/**
 * Runs on load: reads the settings and initialises libusb's default context.
 *
 * Calls DelOutTimeLogFile() first, then switches the log on if `GWQ_LOG.ini` beside the library
 * says so (section `Gwq`, key `Log`, a value that begins with `1`), and prints what it found to
 * standard output. Key `DrainMs` of that section, 1 to 1000, is passed to GWQ_SetDrainMs().
 *
 * @return 0 always
 * @since 1.0.0
 */
GWQ_API int test_init(void);

/**
 * Runs on unload: releases libusb's default context.
 *
 * @return 0 always
 * @since 1.0.0
 */
GWQ_API int test_deinit(void);

/**
 * Initialises libusb's default context with `libusb_init`.
 *
 * @return 0 always
 * @since 1.0.0
 */
GWQ_API int ICC_INIT_LIBUSB(void);

/**
 * Releases libusb's default context with `libusb_exit`.
 *
 * @return 0 always
 * @since 1.0.0
 */
GWQ_API int ICC_UINIT_LIBUSB(void);

GWQ_C_END

#endif
