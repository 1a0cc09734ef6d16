/* gwq: drives the customer terminal at a bank counter. Includes the whole interface.
 *
 * Conventions that hold throughout, unless a declaration says otherwise:
 *
 * - Results are statuses (frame/port.h): 0 is success, negatives are failures; where a function
 *   returns a count, the count is 0 or more.
 * - Port number: 0 is the USB link; n of 1 or more is the serial device /dev/ttyS(n-1).
 * - Text is NUL-terminated. Pointers must not be NULL where no NULL rule is given.
 * - One thread at a time calls the interface. Exceptions, callable from any thread at any time: CancelRead,
 *   CancelWrite, MP_CancleEvaluate, MP_CancelCurrentOperation, the links' own cancel functions, the log functions and
 *   the codecs. Exchanges of two threads do not harm each other, though: the second waits until the first has closed
 *   its link.
 * - On failure, outputs are untouched.
 */
#ifndef GWQ_H
#define GWQ_H

#include "codec/encodings.h"
#include "codec/packet.h"
#include "codec/text_forms.h"
#include "diag/Rwini.h"
#include "diag/log.h"
#include "files/host_files.h"
#include "files/media.h"
#include "files/media_functions.h"
#include "files/pull.h"
#include "files/push.h"
#include "frame/load.h"
#include "frame/port.h"
#include "frame/transaction.h"
#include "links/aux_port.h"
#include "links/serial.h"
#include "links/usb_hid.h"
#include "links/usb_interrupt.h"
#include "pinpad/counter.h"
#include "pinpad/entry.h"
#include "pinpad/keys.h"
#include "pinpad/settings.h"
#include "screens/checkout.h"
#include "screens/comm_call.h"
#include "screens/documents.h"
#include "screens/evaluation.h"
#include "screens/html.h"
#include "screens/information.h"
#include "screens/signing.h"
#include "screens/terminal_control.h"
#include "status.h"

#endif
