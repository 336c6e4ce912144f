// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "script.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

enum { kEntries = 32, kNameBytes = 64, kWaitSteps = 15000, kWaitStepMs = 20 };

struct Counter {
  char entry[kNameBytes];
  unsigned calls;
};

static struct Counter counters[kEntries];

static unsigned CountCall(const char* entry) {
  for (size_t i = 0; i < kEntries; i++) {
    if (counters[i].calls == 0) snprintf(counters[i].entry, kNameBytes, "%s", entry);
    if (strcmp(counters[i].entry, entry) == 0) return ++counters[i].calls;
  }
  return 0;
}

static void SleepMs(long milliseconds) {
  struct timespec left = {milliseconds / 1000, milliseconds % 1000 * 1000000};
  while (nanosleep(&left, &left) != 0) {
  }
}

static void WaitForFile(const char* path) {
  for (int i = 0; i < kWaitSteps && access(path, F_OK) != 0; i++) SleepMs(kWaitStepMs);
}

/* The block is exactly as long as its bytes, so that a memory checker sees a step beyond it. */
static void EmitHex(const char* hex, BlockReceiver receiver) {
  size_t count = strlen(hex) / 2;
  uint8_t* block = malloc(count > 0 ? count : 1);
  if (block == NULL) return;
  for (size_t i = 0; i < count; i++) {
    const char digits[3] = {hex[2 * i], hex[2 * i + 1], '\0'};
    block[i] = (uint8_t)strtoul(digits, NULL, 16);
  }
  receiver(block, (uint32_t)count);
  free(block);
}

static uint8_t* ReadWhole(const char* path, size_t* count) {
  FILE* file = fopen(path, "rb");
  if (file == NULL) return NULL;
  fseek(file, 0, SEEK_END);
  long end = ftell(file);
  rewind(file);
  *count = end > 0 ? (size_t)end : 0;
  uint8_t* bytes = malloc(*count > 0 ? *count : 1);
  if (bytes != NULL) *count = fread(bytes, 1, *count, file);
  fclose(file);
  return bytes;
}

static void EmitFile(const char* path, BlockReceiver receiver) {
  size_t count = 0;
  uint8_t* block = ReadWhole(path, &count);
  if (block == NULL) return;
  receiver(block, (uint32_t)count);
  free(block);
}

static void CopyFile(const char* from, const char* to) {
  size_t count = 0;
  uint8_t* bytes = ReadWhole(from, &count);
  FILE* copy = fopen(to, "wb");
  if (bytes != NULL && copy != NULL) fwrite(bytes, 1, count, copy);
  if (copy != NULL) fclose(copy);
  free(bytes);
}

static void HandleTimer(int number) { (void)number; }

static void StartStorm(long period_us) {
  const struct sigaction action = {.sa_handler = HandleTimer}; /* without SA_RESTART */
  sigaction(SIGALRM, &action, NULL);
  const struct timeval period = {.tv_usec = period_us};
  const struct itimerval timer = {period, period};
  setitimer(ITIMER_REAL, &timer, NULL);
}

static void Act(const char* action, const char* first, const char* second, int32_t* result,
                BlockReceiver receiver) {
  if (strcmp(action, "return") == 0) *result = (int32_t)strtol(first, NULL, 0);
  if (strcmp(action, "delay") == 0) SleepMs(strtol(first, NULL, 10));
  if (strcmp(action, "wait") == 0) WaitForFile(first);
  if (strcmp(action, "emit") == 0) EmitHex(first, receiver);
  if (strcmp(action, "emitfile") == 0) EmitFile(first, receiver);
  if (strcmp(action, "copy") == 0) CopyFile(first, second);
  if (strcmp(action, "storm") == 0) StartStorm(strtol(first, NULL, 10));
}

int32_t PerformScript(const char* entry, int32_t otherwise, BlockReceiver receiver) {
  int32_t result = otherwise;
  unsigned this_call = CountCall(entry);
  const char* path = getenv("ZR7700_ENGINE_SCRIPT");
  FILE* script = path != NULL ? fopen(path, "r") : NULL;
  if (script == NULL) return result;
  char* line = NULL;
  size_t capacity = 0;
  while (getline(&line, &capacity, script) > 0) {
    char* rest = NULL;
    const char* name = strtok_r(line, " \n", &rest);
    const char* call = strtok_r(NULL, " \n", &rest);
    const char* action = strtok_r(NULL, " \n", &rest);
    const char* first = strtok_r(NULL, " \n", &rest);
    const char* second = strtok_r(NULL, " \n", &rest);
    if (action == NULL || strcmp(name, entry) != 0) continue;
    if (strcmp(call, "*") != 0 && strtoul(call, NULL, 10) != this_call) continue;
    Act(action, first != NULL ? first : "", second != NULL ? second : "", &result, receiver);
  }
  free(line);
  fclose(script);
  return result;
}
