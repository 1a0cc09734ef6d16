/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The statuses that the functions return. `status.h` has their texts.
 */
#ifndef GWQ_STATUS_CODES_H
#define GWQ_STATUS_CODES_H

/** Statuses shared by the interface; each function says which it returns. */
enum GwqStatus {
  /** Success. */
  GWQ_OK = 0,
  /** An argument is out of range, nothing was sent. */
  GWQ_BAD_ARGUMENT = -1,
  /** The customer's time ran out, or nothing was read. */
  GWQ_NO_ANSWER = -2,
  /** No link: nothing there, no right to it, or another program has it open. */
  GWQ_NOT_OPENED = -3,
  /** Link: no whole answer in time. */
  GWQ_LINK_TIMEOUT = -4,
  /** Link: not all bytes were written. */
  GWQ_LINK_WRITE = -5,
  /** Serial link: reading failed. */
  GWQ_LINK_READ = -6,
  /** Link: no such USB device, or none open. */
  GWQ_LINK_NO_DEVICE = -7,
  /** A damaged PIN-pad frame, or a refused key. */
  GWQ_BAD_FRAME = -8,
  /** TransProcForEva: the read failed. */
  GWQ_EVALUATION_READ = -9,
  /** Not all bytes of the command were sent. */
  GWQ_SEND_FAILED = -10,
  /** The answer could not be read: time-out, error, or serial cancel. */
  GWQ_READ_FAILED = -11,
  /** HIDDownLoad: the local file cannot be opened or read. */
  GWQ_NO_LOCAL_FILE = -12,
  /** Refused, failed, an unexpected answer, or a host file not written. */
  GWQ_REFUSED = -14,
  /** A file is missing. */
  GWQ_NO_FILE = -15,
  /** The pad refused a PIN entry with byte 1 (2 is GWQ_NO_ANSWER). */
  GWQ_PIN_REFUSAL_1 = -18,
  /** An account number is missing or not all digits. */
  GWQ_BAD_ACCOUNT = -21,
  /** The pad refused a PIN entry with byte 3. */
  GWQ_PIN_REFUSAL_3 = -22,
  /** Cancelled. */
  GWQ_CANCELLED = -23,
  /** Out of memory, or the caller's buffer is too small. */
  GWQ_TOO_SMALL = -24,
  /** USB link: the read was cancelled. */
  GWQ_LINK_CANCELLED = -27,
  /** MP_GetFirmwareVersion: no answer within a second. */
  GWQ_NO_VERSION_ANSWER = -401,
  /** The terminal has no key to encrypt with. */
  GWQ_NO_ENCRYPTION_KEY = -406
};

/** Values that mean something else where a link, or a function of a Base64 file, returns them. */
enum GwqStatusAlias {
  /** Link: an unknown type, or its settings cannot be applied. */
  GWQ_LINK_UNUSABLE = -1,
  /** Link: a NULL buffer, a length below 1, or a link that is not open. */
  GWQ_LINK_BAD_ARGUMENT = -2,
  /** Base64 of a file: a buffer that is NULL or too small, or nothing to read. */
  GWQ_FILE_BAD_ARGUMENT = -2
};

#endif
