/* SPDX-License-Identifier: MIT */
/**
 * @file
 * gwq: drives the customer terminal at a bank counter. Includes the whole interface.
 *
 * Conventions for all functions, unless a declaration says otherwise:
 *
 * - Results are statuses (status_codes.h): GWQ_OK is success, negatives are failures; where a
 *   function returns a count, the count is 0 or more.
 * - Port number: 0 is the USB link; n of 1 or more is the serial device /dev/ttyS(n-1).
 * - Text is NUL-terminated. Pointers must not be NULL where no NULL rule is given.
 * - One thread at a time calls the interface. Exceptions, callable from any thread at any time:
 *   CancelRead, CancelWrite, MP_CancleEvaluate, MP_CancelCurrentOperation, the links' own cancel
 *   functions, the log functions and the codecs. Exchanges of two threads do not harm each other,
 *   though: the second waits until the first has closed its link.
 * - On failure, outputs are untouched.
 */
#ifndef GWQ_H
#define GWQ_H

#include <gwq/codec/encodings.h>
#include <gwq/codec/packet.h>
#include <gwq/codec/text_forms.h>
#include <gwq/diag/Rwini.h>
#include <gwq/diag/log.h>
#include <gwq/files/host_files.h>
#include <gwq/files/media.h>
#include <gwq/files/media_functions.h>
#include <gwq/files/pull.h>
#include <gwq/files/push.h>
#include <gwq/frame/load.h>
#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include <gwq/links/aux_port.h>
#include <gwq/links/end_of_read.h>
#include <gwq/links/serial.h>
#include <gwq/links/usb_hid.h>
#include <gwq/links/usb_interrupt.h>
#include <gwq/pinpad/counter.h>
#include <gwq/pinpad/entry.h>
#include <gwq/pinpad/keys.h>
#include <gwq/pinpad/settings.h>
#include <gwq/screens/checkout.h>
#include <gwq/screens/comm_call.h>
#include <gwq/screens/documents.h>
#include <gwq/screens/evaluation.h>
#include <gwq/screens/html.h>
#include <gwq/screens/information.h>
#include <gwq/screens/signing.h>
#include <gwq/screens/terminal_control.h>
#include <gwq/status.h>
#include <gwq/status_codes.h>

#endif
