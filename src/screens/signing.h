/* The customer's handwritten signature under documents.
 *
 * All work on USB; arguments named ignored are ignored. The documents go to the terminal, the customer signs, and the
 * signature comes back as a picture and as stroke data, both written to local files.
 *
 * Common arguments
 *   iBaudRate   accepted; USB has none
 *   szLink      in; its first character is passed to the pull, where it means nothing; may be NULL
 *   iTimeout    1 to 999 seconds
 *   szFilePath  in; local paths (UTF-8) separated by "|"; as pushFileToZ11 takes them, at most 1023 bytes. The files are
 *               stored under their base names as handed in, while the terminal's encoding is GBK: prefer ASCII names.
 *               On the screen's list the names are GBK, at most 4096 bytes
 *   szLocation  in; where to sign, as the terminal takes it; its bytes go as they are handed in, the terminal's
 *               encoding is GBK
 *   szSignPath  in; local file for the picture, written anew; NULL or empty: no picture is fetched
 *   szSignData  out; pass NULL and read the stroke data from their file, or call GWQ_SetOutputRoom (extra.h) before: the
 *               whole file is copied here, without a terminator, and what the terminal sends decides how long it is.
 *               A file that is longer than the room told gives -24
 *
 * Common results
 *   0    success
 *   -1   an argument is missing or out of range, or the list is too long or not UTF-8: nothing was sent; or a document
 *        cannot be read
 *   -2   the customer did not sign in time
 *   -3   the link could not be opened
 *   -14  the terminal failed, the signature could not be fetched, or its data not be read
 *   -15  a document does not exist
 *   -23  the customer cancelled
 *   -24  out of memory, or szSignData has no room for the stroke data, which stand in their file
 *   others  of the push (files/push.h)
 *
 * Warning: a wait that fails otherwise, cancelled by CancelRead or after a terminal's silence, does not end the call. The
 * signature is fetched all the same, and what comes may be an OLD one, of the customer before, with status 0. After a
 * cancel of yours, throw away what the call has brought, whatever its status.
 *
 * One thread at a time; CancelRead from another thread ends the wait for the customer.
 */
#ifndef GWQ_SCREENS_SIGNING_H
#define GWQ_SCREENS_SIGNING_H

#include <gwq/export.h>

GWQ_C_BEGIN

/* Has documents signed. The stroke data are written to "hw.data" in the directory of szSignPath; in "/" when it names
 * none.
 *   szFilePath, szLocation  not NULL, not empty
 *   szSignData              cleared first, as far as the text goes that it holds: pass it terminated */
GWQ_API int MP_SignPDF(void* ignored, const char* szLink, int iBaudRate, int iTimeout, const char* szFilePath,
                       const char* szLocation, const char* szSignPath, char* szSignData);

/* As MP_SignPDF, with a spoken prompt; szSignData is not cleared first.
 *   szVoiceContent  in; what is spoken, UTF-8; may be empty; NULL gives -1, and so does a text that is not UTF-8
 * Also the statuses of the exchange that passes it on (frame/transaction.h). */
GWQ_API int MP_SignPDF_Voice(void* ignored, const char* szLink, int iBaudRate, int iTimeout,
                             const char* szFilePath, const char* szLocation, const char* szVoiceContent,
                             const char* szSignPath, char* szSignData);

/* Has documents signed in the terminal's TZG mode, with a spoken prompt. The mode is nSignLen, plus 1 when
 * nOperFlag is 1. Unless it is 2, 3 or 4 (2 only without nOperFlag 1), iTimeout is in range and the terminal
 * supports it, the call is one to MP_SignPDF_Voice.
 * In TZG mode only szFilePath must not be NULL; a NULL text is an empty one; szVoiceContent is sent as it is;
 * the stroke data are written to "/tmp/data.txt", mode 0600 (where another user holds that name, to a file of another
 * name, removed afterwards); szSignData is not cleared first; a
 * wait without any answer gives -14.
 *   nOperFlag, nSignLen  passed to the terminal */
GWQ_API int MP_Sign_With_TZG(void* ignored, const char* szLink, int iBaudRate, int iTimeout,
                             const char* szFilePath, const char* szLocation, const char* szVoiceContent,
                             const char* szSignPath, int nOperFlag, int nSignLen, char* szSignData);

/* Has one page signed by hand.
 *   iPortNo         ignored
 *   szFilePath      in; local document; the first three characters behind its last "." are "pdf", "jpg" or "htm"
 *   szSignPath      in; local file for the picture, written anew
 *   szSignDataPath  in; local file for the stroke data, written anew; not asked for when the picture fails
 * Returns 0; -1 a path is NULL or empty, another extension, or iTimeout out of range; -14 any answer but success; else
 * what the push (files/push.h) or the last pull (files/pull.h) returned. */
GWQ_API int GWQ_StartSign(int iPortNo, int iBaudRate, int iTimeout, const char* szFilePath,
                          const char* szSignPath, const char* szSignDataPath);

GWQ_C_END

#endif
