/* SPDX-License-Identifier: MIT */
/**
 * @file
 * The files that the terminal shows: head photos of the tellers, the QR code, the pictures of the
 * idle screen, and its firmware package. On USB.
 *
 * Local paths are the host's. Names, and base names of files that are sent, go to the terminal as
 * they are; its encoding is GBK, and a name out of its lists is GBK, except out of
 * MP_GetFileList(), which converts it.
 *
 * @remark One thread at a time. Outputs are untouched on failure.
 */
#ifndef GWQ_FILES_MEDIA_FUNCTIONS_H
#define GWQ_FILES_MEDIA_FUNCTIONS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/**
 * Lists the head photos on the terminal.
 *
 * @param[in] ignored1    ignored; may be NULL
 * @param[in] ignored2    ignored; may be NULL
 * @param baud            ignored; USB has none
 * @param[out] list       names as the terminal sends them (GBK), and a terminator: `*length` + 1
 *                        bytes; must not be NULL
 * @param[in,out] length  in: size of `list` without the terminator; out: length of the list; must
 *                        not be NULL
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @retval GWQ_TOO_SMALL    (-24) the list is longer than `*length`, or an argument is NULL
 * @since 1.0.0
 */
GWQ_API int MP_FindHeadPhoto(const char* ignored1, const char* ignored2, int baud, char* list, int* length);

/**
 * Deletes a head photo.
 *
 * @param[in] ignored1  ignored; may be NULL
 * @param[in] ignored2  ignored; may be NULL
 * @param baud          ignored; USB has none
 * @param[in] name      sent as it is; a name out of MP_FindHeadPhoto() is GBK; NULL means empty
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) the name does not fit into a command, which has room for at least
 *                           1024 bytes; nothing was sent
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_REFUSED       (-14) the terminal refused, or the exchange failed
 * @since 1.0.0
 */
GWQ_API int MP_DelHeadFile(const char* ignored1, const char* ignored2, int baud, const char* name);

/**
 * Sends a head photo.
 *
 * @param[in] ignored  ignored; may be NULL
 * @param[in] channel  ignored; may be NULL
 * @param baud         ignored; USB has none
 * @param[in] path     local picture; must not be NULL or empty
 * @param[in] name     name on the terminal; NULL or empty means the base name of the local file.
 *                     Either is sent as it is: make it GBK, as teller cards
 *                     (`screens/evaluation.h`) name it
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) `path` is missing, or a name of more than 1022 bytes, and nothing
 *                           was sent; or a local file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_NO_FILE       (-15) the local file does not exist
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_DownHeadFile(const char* ignored, const char* channel, int baud, const char* path,
                            const char* name);

/**
 * Replaces the terminal's QR-code picture, or removes it.
 *
 * @param[in] ignored1  ignored; may be NULL
 * @param[in] ignored2  ignored; may be NULL
 * @param baud          ignored; USB has none
 * @param[in] path      local picture; NULL or empty removes
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) a local file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the command to remove was not sent; or the terminal refused the
 *                           file, or its answer has no frame
 * @retval GWQ_NO_FILE       (-15) the local file does not exist
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_SetBarcodePic(const char* ignored1, const char* ignored2, int baud, const char* path);

/**
 * Lists the terminal's files of a type.
 *
 * @param[in] ignored1  ignored; may be NULL
 * @param[in] ignored2  ignored; may be NULL
 * @param baud          ignored; USB has none
 * @param[in] ignored3  ignored; may be NULL
 * @param nFileType     0 pictures, 2 head photos, or another of the terminal's
 * @param[out] list     UTF-8 and a terminator; 1024 bytes; a longer list is cut; may be NULL:
 *                      nothing is written
 * @retval GWQ_OK           success
 * @retval GWQ_NO_ANSWER    (-2) nothing was read
 * @retval GWQ_NOT_OPENED   (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED  (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED  (-11) reading failed: time-out, error or a cancelled serial read
 * @retval GWQ_CANCELLED    (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_GetFileList(const char* ignored1, const char* ignored2, int baud, const char* ignored3,
                           int nFileType, char* list);

/**
 * Updates the firmware, or changes the pictures of the idle screen.
 *
 * Values of `nSaveType`, for pictures: 0 delete all; 1 replace all; 2 add; 3 add those that the
 * terminal lacks; 4 delete those listed.
 *
 * @param[in] ignored1        ignored; may be NULL
 * @param[in] ignored2        ignored; may be NULL
 * @param baud                ignored; USB has none
 * @param[in] ignored3        ignored; may be NULL
 * @param nFileType           1: `szFilePath` is a firmware package, a file whose extension begins
 *                            with `dat`; 0: pictures, as `nSaveType` says
 * @param[in,out] szFilePath  local paths separated by `|`, with `nSaveType` 4 names on the
 *                            terminal; the text is cut into pieces in place. NULL means an empty
 *                            list, but must not be passed where all pictures are to be replaced.
 *                            Names, and base names of paths, are sent as they are: convert a name
 *                            out of MP_GetFileList() to GBK again
 * @param nSaveType           0 to 4; ignored for firmware
 * @retval GWQ_OK            success
 * @retval GWQ_BAD_ARGUMENT  (-1) unknown type; not a firmware package; `szFilePath` is NULL with
 *                           `nSaveType` 1; or a name to delete of more than 1022 bytes; or a local
 *                           file cannot be opened or read
 * @retval GWQ_NO_ANSWER     (-2) the terminal reports a failure, or its answer is empty
 * @retval GWQ_NOT_OPENED    (-3) the link could not be opened
 * @retval GWQ_SEND_FAILED   (-10) a command was not sent whole, or was cancelled while it was sent
 * @retval GWQ_READ_FAILED   (-11) no answer came in time, or reading failed
 * @retval GWQ_REFUSED       (-14) the terminal refused the file, or its answer has no frame
 * @retval GWQ_NO_FILE       (-15) a local file does not exist, or a picture's path has no `/`
 * @retval GWQ_CANCELLED     (-23) cancelled by another thread
 * @since 1.0.0
 */
GWQ_API int MP_DownloadFile(const char* ignored1, const char* ignored2, int baud, const char* ignored3,
                            int nFileType, char* szFilePath, int nSaveType);

GWQ_C_END

#endif
