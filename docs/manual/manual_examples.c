/* SPDX-License-Identifier: MIT */
/* The manual's examples, one for each group: compiled, and run against the virtual terminal by the tests. */
#include <gwq/extra.h>
#include <gwq/gwq.h>
#include <stdio.h>
#include <string.h>

static const char* document;
static char directory[256];

static int Connect(void) {
  /* [connect] */
  char common[2046] = "";
  char own[2046] = "";
  const int status = MP_GetFirmwareVersion(NULL, NULL, 0, 0, common, own);
  if (status == GWQ_OK) printf("terminal version %s, %s\n", common, own);
  /* [connect] */
  return status;
}

static int Pin(void) {
  /* [pin] */
  const int port = 0; /* USB */
  const int baud = 9600;
  char block[1025] = ""; /* hexadecimal; zeroed, for no terminator is written */
  int status = GWQ_SetPinLen(port, baud, 6);
  if (status == GWQ_OK) status = GWQ_ActiveWKey(port, baud, 0, 1);
  if (status == GWQ_OK) status = GWQ_ReadPinAnsi(port, baud, 0, 0, 30, "6225880123456789", block);
  if (status == GWQ_OK) printf("PIN block %s\n", block);
  /* [pin] */
  return status;
}

static int Keys(void) {
  /* [keys] */
  /* The key comes enciphered under master key 0, from whoever holds that. */
  int status = GWQ_DownLoadWKey(0, 9600, 0, 1, "89B07B35A1B3F47E");
  if (status == GWQ_OK) status = GWQ_ActiveWKey(0, 9600, 0, 1);
  /* [keys] */
  return status;
}

static int Sign(const char* picture) {
  /* [sign] */
  static char strokes[1 << 20]; /* room for the file of the strokes, whose size is not passed */
  int decision = 2;
  int status = MP_ConfirmPDF(NULL, NULL, 9600, 60, document, &decision);
  if (status != GWQ_OK || decision != 0) return status; /* 1: the customer does not agree */
  status = MP_SignPDF(NULL, NULL, 9600, 60, document, "1,300,100", picture, strokes);
  if (status == GWQ_OK) printf("signature in %s, strokes of %zu bytes\n", picture, strlen(strokes));
  /* [sign] */
  return status;
}

static int Show(void) {
  /* [show] */
  int key = -1;
  const int status =
      MP_StartInfoHtml(NULL, NULL, 9600, 60, 1, "<html><body>Opening hours</body></html>", &key, 5);
  if (status == GWQ_OK) printf("%s\n", key == 0 ? "confirmed" : "not confirmed");
  /* [show] */
  return status;
}

static int Rate(void) {
  /* [rate] */
  char rating[2] = "";
  int status = MP_SetEvaluateInfo(NULL, NULL, 9600, "Wang Fang", "0123", 5, NULL);
  if (status == GWQ_OK) status = MP_StartEvaluate(NULL, NULL, 9600, 30, rating);
  if (status == GWQ_OK) printf("rating %s\n", rating); /* empty: the customer chose none */
  /* [rate] */
  return status;
}

static int Files(void) {
  /* [files] */
  char on_terminal[4096] = "";
  const int status = pushFileToZ11(document, on_terminal);
  if (status == GWQ_OK) printf("stored as %s\n", on_terminal);
  /* [files] */
  return status;
}

static int Diagnose(void) {
  /* [diagnose] */
  const int status = GWQ_SetPinLen(0, 9600, 99);
  if (status != GWQ_OK) {
    fprintf(stderr, "%s: %s %s\n", GwqStatusName(status),
            GwqStatusCauseOf("GWQ_SetPinLen", status, GWQ_ENGLISH),
            GwqStatusRemedyOf("GWQ_SetPinLen", status, GWQ_ENGLISH));
  }
  /* [diagnose] */
  return status == GWQ_BAD_ARGUMENT ? GWQ_OK : status;
}

static int Links(void) {
  /* [links] */
  char command[] = "\x1B[0GETVERSION";
  char answer[256 + 1024] = ""; /* a USB read may bring a report more */
  int length = 256;
  const int status = TransProc(0, 9600, command, 0, answer, &length, 2000);
  if (status == GWQ_OK) printf("%.*s\n", length - 2, answer + 1); /* without STX and ETX */
  /* [links] */
  return status;
}

static void ShowProgress(int transfer, const char* file, long long done, long long total, void* user) {
  (void)user;
  printf("%s %s: %lld of %lld bytes\n", transfer == GWQ_TRANSFER_PULL ? "from" : "to", file, done, total);
}

static int Additions(void) {
  /* [additions] */
  static char strokes[1 << 16];
  int status = GWQ_SetOutputRoom((int)sizeof strokes);
  /* From now on MP_SignPDF writes no more to strokes; a longer file gives GWQ_TOO_SMALL. */
  if (status == GWQ_OK) status = GWQ_SetDrainMs(20);
  if (status == GWQ_OK) status = GWQ_SetProgress(&ShowProgress, NULL);
  struct GwqFailure failure;
  if (GWQ_SetPinLen(0, 9600, 6) != GWQ_OK && GWQ_GetFailure(&failure) == GWQ_OK)
    puts(failure.advice[GWQ_ENGLISH]);
  /* [additions] */
  strokes[0] = '\0';
  GWQ_SetDrainMs(0);
  GWQ_SetProgress(NULL, NULL);
  return status;
}

static int Codecs(void) {
  /* [codecs] */
  const unsigned char body[] = {0x30, 0x19}; /* reads the PIN pad's factor */
  unsigned char frame[2 * sizeof body + 8];
  const int length = PackData(body, sizeof body, frame);
  /* [codecs] */
  return length == (int)sizeof frame ? GWQ_OK : GWQ_BAD_FRAME;
}

static int Told(const char* group, int status) {
  printf("%s: status %d\n", group, status);
  return status == GWQ_OK ? 0 : 1;
}

/* manual_examples DOCUMENT DIRECTORY */
int main(int argc, char** argv) {
  if (argc < 3) return 2;
  document = argv[1];
  snprintf(directory, sizeof directory, "%s/signature.png", argv[2]);
  int failed =
      Told("connect", Connect()) + Told("keys", Keys()) + Told("pin", Pin()) + Told("sign", Sign(directory));
  failed +=
      Told("show", Show()) + Told("rate", Rate()) + Told("files", Files()) + Told("diagnose", Diagnose());
  failed += Told("links", Links()) + Told("additions", Additions()) + Told("codecs", Codecs());
  return failed == 0 ? 0 : 1;
}
