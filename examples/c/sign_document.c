/* SPDX-License-Identifier: MIT */
/* Has the customer sign a document on the terminal on USB.
 *
 *   sign_document DOCUMENT PICTURE
 *
 * The signature's picture goes to PICTURE, its strokes to "hw.data" beside it. Exit status 0 when
 * it was signed. */
#include <gwq/gwq.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Empties a file before the customer is asked: it can be written, and no earlier signature is left in it. */
static int Empty(const char* path) {
  FILE* file = fopen(path, "wb");
  if (file == NULL) perror(path);
  return file != NULL && fclose(file) == 0;
}

static int EmptyStrokes(const char* picture) {
  const size_t size = strlen(picture) + sizeof "/hw.data";
  char* path = malloc(size);
  if (path == NULL) return 0;
  snprintf(path, size, "%.*s/hw.data", (int)(strrchr(picture, '/') - picture), picture);
  const int done = Empty(path);
  free(path);
  return done;
}

/* Absolute paths: the library takes a file's name from behind the last "/". */
static int Sign(const char* document, const char* picture) {
  /* No buffer for the strokes: they are in a file, and their size is not known before. */
  const int status =
      MP_SignPDF_Voice(NULL, "9", 115200, 120, document, "1,300,100", "请在屏幕上签名", picture, NULL);
  if (status == GWQ_OK) {
    printf("signed: %s\n", picture);
    return 0;
  }
  remove(picture);
  fprintf(stderr, "not signed: %s %s\n", GwqStatusCauseOf("MP_SignPDF_Voice", status, GWQ_ENGLISH),
          GwqStatusRemedyOf("MP_SignPDF_Voice", status, GWQ_ENGLISH));
  return 1;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: sign_document DOCUMENT PICTURE\n");
    return 2;
  }
  char* document = realpath(argv[1], NULL);
  if (document == NULL) perror(argv[1]);
  char* picture = document != NULL && Empty(argv[2]) ? realpath(argv[2], NULL) : NULL;
  const int result = picture != NULL && EmptyStrokes(picture) ? Sign(document, picture) : 1;
  free(picture);
  free(document);
  return result;
}
