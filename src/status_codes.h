/* The statuses that the functions return. status.h has their texts. */
#ifndef GWQ_STATUS_CODES_H
#define GWQ_STATUS_CODES_H

/* Statuses shared by the interface; each function says which it returns. */
enum GwqStatus {
  GWQ_OK = 0,                   /* success */
  GWQ_BAD_ARGUMENT = -1,        /* an argument is out of range, nothing was sent */
  GWQ_NO_ANSWER = -2,           /* the customer's time ran out, or nothing was read */
  GWQ_NOT_OPENED = -3,          /* no link: nothing there, no right to it, or another program holds it */
  GWQ_LINK_TIMEOUT = -4,        /* link: no whole answer in time */
  GWQ_LINK_WRITE = -5,          /* link: not all bytes were written */
  GWQ_LINK_READ = -6,           /* serial link: reading failed */
  GWQ_LINK_NO_DEVICE = -7,      /* link: no such USB device, or none open */
  GWQ_BAD_FRAME = -8,           /* a damaged PIN-pad frame, or a refused key */
  GWQ_EVALUATION_READ = -9,     /* TransProcForEva: the read failed */
  GWQ_SEND_FAILED = -10,        /* not all bytes of the command were sent */
  GWQ_READ_FAILED = -11,        /* the answer could not be read: time-out, error, or serial cancel */
  GWQ_NO_LOCAL_FILE = -12,      /* HIDDownLoad: the local file cannot be opened or read */
  GWQ_REFUSED = -14,            /* refused, failed, an unexpected answer, or a host file not written */
  GWQ_NO_FILE = -15,            /* a file is missing */
  GWQ_PIN_REFUSAL_1 = -18,      /* the pad refused a PIN entry with byte 1 (2 gives GWQ_NO_ANSWER) */
  GWQ_BAD_ACCOUNT = -21,        /* an account number is missing or not all digits */
  GWQ_PIN_REFUSAL_3 = -22,      /* the pad refused a PIN entry with byte 3 */
  GWQ_CANCELLED = -23,          /* cancelled */
  GWQ_TOO_SMALL = -24,          /* out of memory, or the caller's buffer is too small */
  GWQ_LINK_CANCELLED = -27,     /* USB link: the read was cancelled */
  GWQ_NO_VERSION_ANSWER = -401, /* MP_GetFirmwareVersion: no answer within a second */
  GWQ_NO_ENCRYPTION_KEY = -406  /* the terminal holds no key to encipher with */
};

/* Values that mean something else where a link, or a function of a Base64 file, returns them. */
enum GwqStatusAlias {
  GWQ_LINK_UNUSABLE = -1,     /* link: an unknown type, or its settings cannot be applied */
  GWQ_LINK_BAD_ARGUMENT = -2, /* link: a NULL buffer, a length below 1, or a link that is not open */
  GWQ_FILE_BAD_ARGUMENT = -2  /* Base64 of a file: a buffer that is NULL or too small, or nothing to read */
};

#endif
