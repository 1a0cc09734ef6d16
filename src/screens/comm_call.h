/* A description of the terminal as one JSON object. One thread at a time. */
#ifndef GWQ_SCREENS_COMM_CALL_H
#define GWQ_SCREENS_COMM_CALL_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Asks the terminal on USB what it is.
 *   inJson     in; an object of which two members count, each a number or a decimal text, 0 when missing:
 *                "RequestBaudRate"  of the exchanges
 *                "RequestTimeOut"   not used: every answer is awaited for 2 seconds
 *              What is not JSON, and NULL, is a request with neither.
 *   nReserved  ignored
 *   outJson    out; an object of texts, with a terminator:
 *                "ErrorCode"       "0" always; the status is what this function returns
 *                "ErrorMessage"    what could not be read, or "success"
 *                "DeviceBrand", "DllVersion", "DeviceVersion", "ProductionDate", "DeviceSN", "DeviceModel"
 *              What could not be read is empty. Bytes of the terminal's texts are passed on as they came.
 *   pnOutLen   in: size of `outJson`, which must be greater than the text's length; out: length of the text
 * Returns the status of the last exchange, which reads the firmware's version (0, -2, -3, -10, -11 or -23 of
 * frame/transaction.h); -24, with outputs untouched, if `outJson` is too small or an output is NULL, or out of memory.
 * Failures of the other exchanges show in "ErrorMessage" alone. */
GWQ_API int DEV_CommCall(const char* inJson, int nReserved, char* outJson, int* pnOutLen);

GWQ_C_END

#endif
