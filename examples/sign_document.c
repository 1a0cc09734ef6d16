/* Has the customer sign a document on the terminal on USB.
 *
 *   sign_document DOCUMENT PICTURE
 *
 * The signature's picture goes to PICTURE, its strokes to "hw.data" beside it. Exit status 0 when it was signed. */
#include <gwq.h>
#include <stdio.h>

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: sign_document DOCUMENT PICTURE (absolute paths)\n");
    return 2;
  }
  /* No buffer for the strokes: they are in a file, and their size is not known before. */
  const int status =
      MP_SignPDF_Voice(NULL, "9", 115200, 120, argv[1], "1,300,100", "请在屏幕上签名", argv[2], NULL);
  if (status == GWQ_CANCELLED || status == GWQ_NO_ANSWER) {
    fprintf(stderr, "not signed: %s\n", GwqStatusCause(status, GWQ_ENGLISH));
    return 1;
  }
  if (status != GWQ_OK) {
    fprintf(stderr, "%s: %s %s\n", GwqStatusName(status), GwqStatusCause(status, GWQ_ENGLISH),
            GwqStatusRemedy(status, GWQ_ENGLISH));
    return 1;
  }
  printf("signed: %s\n", argv[2]);
  return 0;
}
