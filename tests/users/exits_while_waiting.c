/* SPDX-License-Identifier: MIT */
/* A host that exits while one of its calls waits: exits_while_waiting WAY CALL FILE MILLISECONDS
 *
 *   WAY   main_returns     main does, the call is in another thread
 *         main_exits       main calls exit, likewise
 *         another_exits    the call is in main; another thread calls exit
 *         child_exits      main forks a child that exits; the call goes on, until it is cancelled
 *   CALL  pin, push, pull; FILE on the host is what is pushed, or where the terminal's /tmp/large.bin is pulled to
 *
 * Exits with 7, after printing when: the milliseconds of the monotonic clock. With 1 when the call has
 * not waited. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <gwq/gwq.h>

enum { kBaud = 115200, kExitStatus = 7, kLongestExitMs = 3000 };

static const char *wanted_call, *file;
static atomic_int call_ended;
static int call_status;

static long MonotonicMs(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

static void SleepMs(long milliseconds) {
  const struct timespec pause = {milliseconds / 1000, milliseconds % 1000 * 1000000};
  nanosleep(&pause, NULL);
}

static int Call(void) {
  static char pull[] = "\033[0PULLFILE\002/tmp/large.bin\003";
  static char path[4096];
  char pin[16] = "";
  if (strcmp(wanted_call, "pin") == 0) return GWQ_ReadPin(0, kBaud, 0, 60, pin, 15);
  if (strcmp(wanted_call, "push") == 0) return Z11DownLoadFile(0, '9', kBaud, 255, file, "/tmp/pushed.bin");
  snprintf(path, sizeof path, "%s", file);
  return PullFile(0, '9', kBaud, 3000, (int)sizeof pull - 1, pull, path);
}

static void* CallInThread(void* unused) {
  call_status = Call();
  call_ended = 1;
  return unused;
}

static int TellAndExitWith(int status) {
  printf("exits at %ld\n", MonotonicMs());
  fflush(stdout);
  return status;
}

static int ExitStatus(void) {
  return TellAndExitWith(call_ended ? 1 : kExitStatus);
}

static void* ExitInThread(void* milliseconds) {
  SleepMs(*(long*)milliseconds);
  exit(ExitStatus()); /* NOLINT(concurrency-mt-unsafe): it is the point */
}

/* The child's part of the library goes with it, and nothing of ours. */
static int GoOnAfterChild(pthread_t caller) {
  int status = 0;
  const long begin = MonotonicMs();
  const pid_t child = fork();
  if (child == 0) exit(3); /* NOLINT(concurrency-mt-unsafe) */
  if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 3) return 2;
  if (MonotonicMs() - begin > kLongestExitMs) return 4;
  SleepMs(300);
  if (call_ended) return 1;
  MP_CancelCurrentOperation(NULL, NULL, kBaud, 0);
  pthread_join(caller, NULL);
  if (call_status != GWQ_CANCELLED && call_status != GWQ_SEND_FAILED && call_status != GWQ_READ_FAILED)
    return 5;
  if (strcmp(wanted_call, "push") == 0) SleepMs(1100); /* while the terminal waits for the rest of a packet */
  return CheckUtf8version() == 1 ? TellAndExitWith(kExitStatus) : 6;
}

int main(int count, char** arguments) {
  pthread_t thread;
  if (count != 5) return 9;
  const char* way = arguments[1];
  long milliseconds = atol(arguments[4]);
  wanted_call = arguments[2];
  file = arguments[3];
  if (strcmp(way, "another_exits") == 0) {
    pthread_create(&thread, NULL, &ExitInThread, &milliseconds);
    CallInThread(NULL);
    for (;;) pause(); /* until the process is gone */
  }
  pthread_create(&thread, NULL, &CallInThread, NULL);
  SleepMs(milliseconds);
  if (strcmp(way, "child_exits") == 0) return GoOnAfterChild(thread);
  if (strcmp(way, "main_exits") == 0) exit(ExitStatus()); /* NOLINT(concurrency-mt-unsafe) */
  return ExitStatus();
}
