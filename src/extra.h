/* SPDX-License-Identifier: MIT */
/**
 * @file
 * Additions to the interface, which every host may ignore: one that uses none of them sees no
 * difference.
 *
 * `gwq/gwq.h` does not include this header.
 */
#ifndef GWQ_EXTRA_H
#define GWQ_EXTRA_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Sets the room of the calling thread's outputs whose size is not passed with the call.
 *
 * These are `szSignData` of MP_SignPDF(), MP_SignPDF_Voice() and MP_Sign_With_TZG(), and
 * `pFileData` of PN_GetStringBlock() (its terminator included). A longer result leaves the output
 * untouched, and the call returns GWQ_TOO_SMALL; the file on the host has all of it. Without a
 * limit the terminal, or a device in its place, decides how much is written to these buffers.
 *
 * Any thread, for its own calls; never blocks.
 *
 * @param bytes  size of each output; 0 is the default, without a limit
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `bytes` is below 0; the size stays as it was
 * @since 1.0.0.36
 */
GWQ_API int GWQ_SetOutputRoom(int bytes);

/**
 * Sets how long the library listens before most calls to throw away what an earlier screen has left.
 *
 * Without it a drain ends when the clock's second changes, after up to a second of silence. With it a
 * drain ends after `ms` without a byte, by the monotonic clock; bytes that keep coming end it after a
 * second. An answer of an earlier screen that comes later is taken for that of the call: the page on
 * time-outs says how to find a safe value. `DrainMs` in section `Gwq` of `GWQ_LOG.ini`, 1 to 1000,
 * sets the same when the library is loaded.
 *
 * For all threads; takes effect at the next drain. Any thread; never blocks.
 *
 * @param ms  1 to 1000; 0 is the default, until the clock's second changes
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `ms` is out of range; nothing changes
 * @since 1.0.0.36
 */
GWQ_API int GWQ_SetDrainMs(int ms);

/** What a transfer is, for GwqProgress. */
enum GwqTransfer {
  GWQ_TRANSFER_PUSH = 1,    /**< a document or page to the terminal */
  GWQ_TRANSFER_PULL = 2,    /**< a file from the terminal */
  GWQ_TRANSFER_MEDIA = 3,   /**< a picture, head photo or text that the terminal keeps */
  GWQ_TRANSFER_FIRMWARE = 4 /**< a firmware image */
};

/**
 * Told how far a transfer is.
 *
 * @param transfer  enum GwqTransfer
 * @param file      the file on the host; for DownVideoInfo() its name on the terminal; valid only
 *                  during the call
 * @param done      bytes that have passed; of a push those that the terminal has confirmed
 * @param total     bytes in all; 0 while unknown, as in a pull before its end
 * @param user      what was passed to GWQ_SetProgress()
 */
typedef void (*GwqProgress)(int transfer, const char* file, long long done, long long total, void* user);

/**
 * Has the calling thread's transfers tell how far they are.
 *
 * The callback is called on the thread that transfers: at the start, at most every 100 ms between two
 * packets (in a pull between two reports, and only if the file is a regular one), and at the end, also
 * after a failure; `done` is `total` after success. It may call CancelWrite(): the transfer ends before
 * its next packet, and the call returns GWQ_CANCELLED; the terminal then keeps nothing of a pushed
 * file. A call of CancelWrite() on another thread does the same. HIDDownLoad() and DownVideoFile() stop
 * as without a callback; a pull is ended by CancelRead(). The callback calls nothing else of the
 * library. One that leaves by an exception or a jump abandons the call: the file on the host is
 * closed, the next call closes the link and works; memory that the call had allocated is lost.
 *
 * Any thread, for its own calls; never blocks.
 *
 * @param callback  NULL is the default: nothing is told
 * @param user      passed to the callback as it is
 * @retval GWQ_OK  always
 * @since 1.0.0.36
 */
GWQ_API int GWQ_SetProgress(GwqProgress callback, void* user);

/** Where a call failed. */
enum GwqFailureStep {
  GWQ_STEP_NONE = 0,       /**< nothing failed */
  GWQ_STEP_ARGUMENT = 1,   /**< an argument, or the room of an output */
  GWQ_STEP_LOCAL_FILE = 2, /**< a file on this machine */
  GWQ_STEP_FIND = 3,       /**< the device is not there */
  GWQ_STEP_PERMISSION = 4, /**< this user may not open the device */
  GWQ_STEP_OPEN = 5,       /**< the device is there and does not open */
  GWQ_STEP_CLAIM = 6,      /**< another program, or the kernel's driver, has the device */
  GWQ_STEP_SEND = 7,       /**< the device did not take all bytes */
  GWQ_STEP_WAIT = 8,       /**< no whole answer in time, or cancelled */
  GWQ_STEP_ANSWER = 9      /**< the terminal refused, or answered unexpectedly */
};

/** Whose number GwqFailure::error is. */
enum GwqErrorSource {
  GWQ_ERROR_NONE = 0,   /**< there is none */
  GWQ_ERROR_SYSTEM = 1, /**< the system's errno */
  GWQ_ERROR_LIBUSB = 2  /**< libusb's enum libusb_error */
};

/**
 * A call that failed. A number that is not known is 0, a text that is not known empty.
 *
 * The size never changes: later versions use `reserved` and `reserved_text`, which are zero until
 * then, so that a field that the library does not know reads as not known.
 */
struct GwqFailure {
  int status;              /**< what the call returned; 0 when none has failed */
  int step;                /**< enum GwqFailureStep */
  int error_source;        /**< enum GwqErrorSource */
  int error;               /**< number of the error */
  int bus;                 /**< USB bus of the device */
  int address;             /**< its address on the bus */
  int vendor;              /**< its USB vendor number */
  int product;             /**< its USB product number */
  int holder;              /**< process that has it open for reading and writing; 0: none seen */
  int kernel_driver;       /**< 1 if the kernel's driver could not be detached */
  int reserved[22];        /**< 0 */
  char function[64];       /**< the function that failed */
  char error_text[128];    /**< the error as a text, in English */
  char port_path[32];      /**< where the device is plugged in, such as `1-2.3` */
  char tty[64];            /**< the serial device, such as `/dev/ttyS0` */
  char holder_name[32];    /**< name of the process */
  char advice[2][384];     /**< what to do, one sentence, by enum GwqLanguage (UTF-8) */
  char reserved_text[192]; /**< 0 */
};

/**
 * Tells what the calling thread's last failed call failed of.
 *
 * Calls are those of functions that exchange with a device or drive one, and that can fail. One
 * that succeeds clears what is known; functions that only compute, and those that always succeed,
 * change nothing. A call that a predicate makes within another one is part of it. The process that
 * has the device is looked for now, not when the call failed.
 *
 * Any thread, for its own calls; blocks only to read the system's files.
 *
 * @param[out] failure  written whole; all zero when no call has failed
 * @retval GWQ_OK            success, also when no call has failed
 * @retval GWQ_BAD_ARGUMENT  (-1) `failure` is NULL
 * @since 1.0.0.36
 */
GWQ_API int GWQ_GetFailure(struct GwqFailure* failure);

/**
 * Returns the error of the first log line that could not be written, and clears it.
 *
 * The log is the process's: its failures are no call's, and no call fails because of them.
 *
 * Any thread; never blocks.
 *
 * @return an errno; 0 when every line since the last call was written
 * @since 1.0.0.36
 */
GWQ_API int GWQ_GetLogFailure(void);

/**
 * A terminal on USB. A number that is not known is 0, a text that is not known empty.
 *
 * The size never changes; `reserved` is zero until a later version uses it.
 */
struct GwqTerminalPlace {
  int bus;              /**< USB bus */
  int address;          /**< address on the bus */
  int vendor;           /**< USB vendor number */
  int product;          /**< USB product number */
  int may_open;         /**< 1 if this user may open it */
  int holder;           /**< process that has it open, this one included; 0 also if it may not be seen */
  int reserved[10];     /**< 0 */
  char port_path[32];   /**< where it is plugged in, such as `1-2.3` */
  char holder_name[32]; /**< name of the process */
};

/**
 * Lists the terminals on USB, of both identities, without opening them.
 *
 * With several, the other functions use the first one that libusb lists of the first identity that
 * is there. Processes of other users are seen only with the right to do so.
 *
 * Any thread, also during a call of another one; blocks only to read the system's files.
 *
 * @param[out] places  `room` elements, of which as many as there are terminals are written, ordered
 *                     by bus and address; may be NULL if `room` is 0
 * @param room         number of elements; 0 only counts
 * @return how many terminals there are, also if that is more than `room`; GWQ_BAD_ARGUMENT (-1) for
 *         `room` below 0, or `places` NULL with `room` above 0
 * @since 1.0.0.36
 */
GWQ_API int GWQ_FindTerminals(struct GwqTerminalPlace* places, int room);

GWQ_C_END

#endif
