/* The files that the terminal shows: head photos of the tellers, the QR code, the pictures of the idle screen, and its
 * firmware package. All on USB; arguments named ignored are ignored.
 *
 * Common arguments
 *   baud  accepted; USB has none
 *
 * Common results
 *   0    success
 *   -3   the link could not be opened
 *   -14  the terminal refused or failed
 *   -15  a local file does not exist
 *   others  of the exchange (frame/transaction.h), the push (files/push.h) or DeleteMediaFile
 *
 * Local paths are the host's. Names go to the terminal as they are handed in, base names of files that are sent too;
 * its encoding is GBK, and a name out of its lists is GBK, but for MP_GetFileList, which converts it.
 * On failure outputs are untouched. One thread at a time.
 */
#ifndef GWQ_FILES_MEDIA_FUNCTIONS_H
#define GWQ_FILES_MEDIA_FUNCTIONS_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Lists the head photos on the terminal.
 *   list    out; names as the terminal gives them (GBK), with a terminator: capacity + 1 bytes
 *   length  in: capacity without the terminator; out: length of the list
 * Also -24: the list is longer than the capacity, or an argument is NULL. */
GWQ_API int MP_FindHeadPhoto(const char* ignored1, const char* ignored2, int baud, char* list, int* length);

/* Deletes a head photo.
 *   name  in; NULL is an empty one; more than a command holds, 1024 bytes at least, give -1 and nothing is sent. Its
 *         bytes go as they are; a name out of MP_FindHeadPhoto is GBK
 * Returns 0, -1, -3 or -14. */
GWQ_API int MP_DelHeadFile(const char* ignored1, const char* ignored2, int baud, const char* name);

/* Sends a head photo.
 *   channel  in; its first character is passed to the push; may be NULL
 *   path     in; local picture
 *   name     in; name on the terminal; NULL or empty means the local file's base name. Either goes as it is: make it
 *            GBK, as teller cards (screens/evaluation.h) name it
 * Also -1: no path, or a name of more than 1022 bytes. */
GWQ_API int MP_DownHeadFile(const char* ignored, const char* channel, int baud, const char* path,
                            const char* name);

/* Replaces the terminal's QR-code picture, or removes it.
 *   path  in; local picture; NULL or empty removes */
GWQ_API int MP_SetBarcodePic(const char* ignored1, const char* ignored2, int baud, const char* path);

/* Lists the terminal's files of a type.
 *   nFileType  0 pictures, 2 head photos; others are the terminal's
 *   list       out; UTF-8 with a terminator; 1024 bytes; a longer list is cut; NULL is passed over */
GWQ_API int MP_GetFileList(const char* ignored1, const char* ignored2, int baud, const char* ignored3,
                           int nFileType, char* list);

/* Updates the firmware, or changes the pictures of the idle screen.
 *   nFileType   1: `szFilePath` is a firmware package, a file whose extension begins with "dat"
 *               0: pictures, as `nSaveType` says
 *   szFilePath  in; local paths separated by "|", with nSaveType 4 names on the terminal; the text is cut into pieces
 *               in place; NULL is an empty list, but gives -1 where all pictures are to be replaced. Names, and base
 *               names of paths, go as they are: a name out of MP_GetFileList has to be GBK again
 *   nSaveType   0 delete all; 1 replace all; 2 add; 3 add those that the terminal lacks; 4 delete those listed
 * Also -1: unknown type, not a firmware package, or a name to delete of more than 1022 bytes; -15 also for a path
 * without "/". */
GWQ_API int MP_DownloadFile(const char* ignored1, const char* ignored2, int baud, const char* ignored3,
                            int nFileType, char* szFilePath, int nSaveType);

GWQ_C_END

#endif
