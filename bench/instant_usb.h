// SPDX-License-Identifier: MIT
/* A libusb that costs nothing: one terminal is plugged in, every transfer succeeds at once, and
 * each read brings the same short answer. What is left is the work of the program that calls it. */
#ifndef GWQ_BENCH_INSTANT_USB_H
#define GWQ_BENCH_INSTANT_USB_H

enum { INSTANT_VID = 0x1209, INSTANT_PID = 0x0001 };

#endif
