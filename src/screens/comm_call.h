/* SPDX-License-Identifier: MIT */
/**
 * @file
 * A description of the terminal as one JSON object.
 *
 * @remark One thread at a time.
 */
#ifndef GWQ_SCREENS_COMM_CALL_H
#define GWQ_SCREENS_COMM_CALL_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Reads a description of the terminal on USB.
 *
 * The result is the status of the last exchange, which reads the version of the firmware. Failures
 * of the exchanges before it show in `ErrorMessage` only.
 *
 * Members of the request, each a number or a decimal text, 0 when missing:
 *
 * - `RequestBaudRate`: of the exchanges
 * - `RequestTimeOut`: not used; the host waits 2 seconds for every answer
 *
 * Members of the answer, all texts; what could not be read is empty, and bytes of the terminal's
 * texts are copied unchanged:
 *
 * - `ErrorCode`: always `0`; the status is what this function returns
 * - `ErrorMessage`: what could not be read, or `success`
 * - `DeviceBrand`, `DllVersion`, `DeviceVersion`, `ProductionDate`, `DeviceSN`, `DeviceModel`
 *
 * @param[in] inJson        an object; NULL, or what is not JSON, is a request with no members
 * @param nReserved         ignored
 * @param[out] outJson      an object and a terminator; must not be NULL
 * @param[in,out] pnOutLen  in: size of `outJson`, which must be greater than the length of the
 *                          text; out: length of the text; must not be NULL
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL    (-24) `outJson` is too small, an output is NULL, or out of memory;
 *                          outputs are untouched
 * @since 1.0.0
 */
GWQ_API int DEV_CommCall(const char* inJson, int nReserved, char* outJson, int* pnOutLen);

GWQ_C_END

#endif
