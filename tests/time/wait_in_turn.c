// Ten threads that wait one longer than the other, and one that works for less than the shortest
// wait: each says when it is done by the program's clock, the last to be created the first to end.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0

#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

enum { kWaiters = 10, kFirst_ms = 10000, kApart_ms = 1000, kWork_ms = 300 };

static double Clock(clockid_t clock) {
  struct timespec now;
  clock_gettime(clock, &now);
  return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static void Say(const char* what, int number) {
  static double start;
  if (start == 0) start = Clock(CLOCK_MONOTONIC);
  printf("%s %d %.3f\n", what, number, Clock(CLOCK_MONOTONIC) - start);
  fflush(stdout);
}

static void* WaitInTurn(void* number) {
  int turn = (int)(intptr_t)number;
  usleep((useconds_t)(kFirst_ms + turn * kApart_ms) * 1000);
  Say("waited", turn);
  return NULL;
}

static void* Work(void* unused) {
  while (Clock(CLOCK_THREAD_CPUTIME_ID) < kWork_ms / 1e3) {
  }
  Say("worked", 0);
  return unused;
}

int main(void) {
  pthread_t waiters[kWaiters], worker;
  Say("started", 0);
  for (int i = kWaiters - 1; i >= 0; i--) {
    pthread_create(&waiters[i], NULL, WaitInTurn, (void*)(intptr_t)i);
  }
  pthread_create(&worker, NULL, Work, NULL);
  pthread_join(worker, NULL);
  for (int i = 0; i < kWaiters; i++) pthread_join(waiters[i], NULL);
  Say("joined", 0);
}
