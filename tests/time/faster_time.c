// A library to preload: a program's time runs faster while all its threads wait, so that a job's
// pauses are as long as ever by its own clock and a fraction of that by ours.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0

// ZR7700_TIMES_FASTER says how many times as fast. While a thread works the clock runs as the
// system's does, and it never runs past the end of a wait before the waiting thread has seen that
// end: a thread that a loaded machine is slow to run loses no time against the others, and waits
// end in the order of their ends. Whatever waits for something else than these functions counts as
// work.
//
// ZR7700_CLOCK names a file in which the clock can be read from outside: see ClockPage.
//
// Every function is the C library's in the end, which is found behind this one.

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))
#define EXPORT __attribute__((visibility("default")))

enum { kSockets = 1024, kPatience_ms = 300 };
static const int64_t kSecond_ns = 1000000000, kMillisecond_ns = 1000000, kMicrosecond_ns = 1000;
static const int64_t kShortestStep_ns = 200000;
static const int64_t kNever_ns = INT64_MAX;

// The clock: at `real_ns` of CLOCK_MONOTONIC it showed `program_ns`; since then it runs `rate`
// times as fast as that, up to `cap_ns`. Readers from outside take it when `changes` is even and
// the same before and after.
struct ClockPage {
  _Atomic uint64_t changes;
  int64_t start_ns, program_ns, real_ns, cap_ns;
  double rate;
};

// A thread's wait, on its stack.
struct Wait {
  int64_t end_ns;
  struct Wait *next, **place;
};

static struct ClockPage own_page = {.cap_ns = INT64_MAX, .rate = 1};
static struct ClockPage* clock_page = &own_page;
static double times_faster = 1;
static int64_t start_ns, realtime_ahead_ns;

// Guards the clock and what follows.
static atomic_flag lock = ATOMIC_FLAG_INIT;
static int threads = 1, waiting = 0;
static struct Wait* waits = NULL;

// What SO_RCVTIMEO and SO_SNDTIMEO say of each socket.
static _Atomic int64_t receive_limits_ns[kSockets], send_limits_ns[kSockets];

// Not a mutex: a sanitizer's are not ready in every thread that asks for the time.
static void Lock(void) {
  while (atomic_flag_test_and_set(&lock)) sched_yield();
}

static void Unlock(void) { atomic_flag_clear(&lock); }

static int64_t FromTimespec(struct timespec time) {
  return time.tv_sec * kSecond_ns + time.tv_nsec;
}

static int64_t FromTimeval(struct timeval time) {
  return time.tv_sec * kSecond_ns + time.tv_usec * kMicrosecond_ns;
}

static struct timespec ToTimespec(int64_t time_ns) {
  return (struct timespec){time_ns / kSecond_ns, time_ns % kSecond_ns};
}

static struct timeval ToTimeval(int64_t time_ns) {
  return (struct timeval){time_ns / kSecond_ns, time_ns % kSecond_ns / kMicrosecond_ns};
}

static int64_t RealClock(clockid_t clock) {
  struct timespec now = {0, 0};
  NEXT(clock_gettime)(clock, &now);
  return FromTimespec(now);
}

// The clock. `lock` is held.

static int64_t ClockAt(int64_t real_ns) {
  const struct ClockPage* page = clock_page;
  int64_t now_ns = page->program_ns + (int64_t)((double)(real_ns - page->real_ns) * page->rate);
  return now_ns < page->cap_ns ? now_ns : page->cap_ns;
}

static int64_t FirstEnd(void) {
  int64_t first_ns = kNever_ns;
  for (const struct Wait* wait = waits; wait != NULL; wait = wait->next) {
    if (wait->end_ns < first_ns) first_ns = wait->end_ns;
  }
  return first_ns;
}

static void TellClock(int64_t program_ns, int64_t real_ns, int64_t cap_ns, double rate) {
  struct ClockPage* page = clock_page;
  atomic_fetch_add(&page->changes, 1);
  page->start_ns = start_ns;
  page->program_ns = program_ns;
  page->real_ns = real_ns;
  page->cap_ns = cap_ns;
  page->rate = rate;
  atomic_fetch_add(&page->changes, 1);
}

// Lets the clock run on from now as fast as the threads' state wants it.
static void SetClock(void) {
  int64_t real_ns = RealClock(CLOCK_MONOTONIC);
  TellClock(ClockAt(real_ns), real_ns, FirstEnd(), waiting >= threads ? times_faster : 1);
}

static struct ClockPage* OpenPage(const char* path) {
  int file = open(path, O_RDWR | O_CLOEXEC);
  if (file < 0) return &own_page;
  void* page = mmap(NULL, sizeof own_page, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return page != MAP_FAILED ? page : &own_page;
}

__attribute__((constructor)) static void StartClock(void) {
  const char *factor = getenv("ZR7700_TIMES_FASTER"), *path = getenv("ZR7700_CLOCK");
  double wanted = factor != NULL ? strtod(factor, NULL) : 1;
  if (wanted >= 1) times_faster = wanted;
  start_ns = RealClock(CLOCK_MONOTONIC);
  realtime_ahead_ns = RealClock(CLOCK_REALTIME) - start_ns;
  if (path != NULL) clock_page = OpenPage(path);
  TellClock(start_ns, start_ns, kNever_ns, 1);
}

static int64_t ProgramClock(void) {
  Lock();
  int64_t now_ns = ClockAt(RealClock(CLOCK_MONOTONIC));
  Unlock();
  return now_ns;
}

// Waits.

static void BeginWait(struct Wait* wait, int64_t limit_ns) {
  Lock();
  wait->end_ns = limit_ns == kNever_ns ? kNever_ns : ClockAt(RealClock(CLOCK_MONOTONIC)) + limit_ns;
  wait->next = waits;
  wait->place = &waits;
  if (waits != NULL) waits->place = &wait->next;
  waits = wait;
  ++waiting;
  SetClock();
  Unlock();
}

// With a thread that has ended where that was waited for. Keeps errno.
static void EndWait(struct Wait* wait, int ended_threads) {
  int error = errno;
  Lock();
  *wait->place = wait->next;
  if (wait->next != NULL) wait->next->place = wait->place;
  --waiting;
  threads -= ended_threads;
  SetClock();
  Unlock();
  errno = error;
}

static int64_t RestOf(const struct Wait* wait) {
  return wait->end_ns == kNever_ns ? kNever_ns : wait->end_ns - ProgramClock();
}

// How long to wait really before looking at the clock again.
static struct timespec NextStep(const struct Wait* wait) {
  int64_t rest_ns = RestOf(wait);
  if (rest_ns <= 0) return ToTimespec(0);
  int64_t step_ns = (int64_t)((double)rest_ns / times_faster) + 1;
  return ToTimespec(step_ns > kShortestStep_ns ? step_ns : kShortestStep_ns);
}

// Clocks.

EXPORT int clock_gettime(clockid_t clock, struct timespec* now) {
  switch (clock) {
    case CLOCK_MONOTONIC:
    case CLOCK_MONOTONIC_COARSE:
      *now = ToTimespec(ProgramClock());
      return 0;
    case CLOCK_REALTIME:
    case CLOCK_REALTIME_COARSE:
      *now = ToTimespec(ProgramClock() + realtime_ahead_ns);
      return 0;
    default:  // processor time, and others that no wait is measured by
      return NEXT(clock_gettime)(clock, now);
  }
}

EXPORT int gettimeofday(struct timeval* restrict now, void* restrict zone) {
  (void)zone;
  *now = ToTimeval(ProgramClock() + realtime_ahead_ns);
  return 0;
}

EXPORT time_t time(time_t* copy) {
  time_t now = (ProgramClock() + realtime_ahead_ns) / kSecond_ns;
  if (copy != NULL) *copy = now;
  return now;
}

// Whoever is to send something may be slow as well. When a look at a descriptor has found nothing
// and a sleep follows, the clock stands still until something comes: for a while of ours, once in a
// silence.

static _Thread_local int looked_at = -1;
static _Thread_local int is_silent = 0;

static int FirstOf(int count, const fd_set* set) {
  for (int i = 0; set != NULL && i < count; i++) {
    if (FD_ISSET(i, set)) return i;
  }
  return -1;
}

static void RememberLook(int descriptor, int ready) {
  looked_at = ready == 0 ? descriptor : -1;
  if (ready > 0) is_silent = 0;
}

static void HoldForSender(void) {
  if (looked_at < 0 || is_silent) return;
  struct pollfd watched = {looked_at, POLLIN, 0};
  struct Wait still;
  BeginWait(&still, 0);
  is_silent = NEXT(poll)(&watched, 1, kPatience_ms) == 0;
  EndWait(&still, 0);
  looked_at = -1;
}

// Sleeps.

EXPORT int nanosleep(const struct timespec* length, struct timespec* rest) {
  if (length->tv_sec < 0 || length->tv_nsec < 0 || length->tv_nsec >= kSecond_ns) {
    errno = EINVAL;
    return -1;
  }
  struct Wait wait;
  int result = 0;
  HoldForSender();
  BeginWait(&wait, FromTimespec(*length));
  while (result == 0 && RestOf(&wait) > 0) {
    struct timespec step = NextStep(&wait);
    result = NEXT(nanosleep)(&step, NULL);
  }
  int64_t rest_ns = RestOf(&wait);
  EndWait(&wait, 0);
  if (result != 0 && rest != NULL) *rest = ToTimespec(rest_ns > 0 ? rest_ns : 0);
  return result;
}

EXPORT int usleep(useconds_t microseconds) {
  struct timespec length = ToTimespec(microseconds * kMicrosecond_ns);
  return nanosleep(&length, NULL);
}

// As the C library's: the whole seconds that are left when a signal ends it, rounded.
EXPORT unsigned sleep(unsigned seconds) {
  struct timespec length = {(time_t)seconds, 0};
  if (nanosleep(&length, &length) == 0) return 0;
  return (unsigned)((FromTimespec(length) + kSecond_ns / 2) / kSecond_ns);
}

// Waits for descriptors.

EXPORT int ppoll(struct pollfd* watched, nfds_t count, const struct timespec* limit,
                 const sigset_t* mask) {
  struct Wait wait;
  int ready;
  BeginWait(&wait, limit != NULL ? FromTimespec(*limit) : kNever_ns);
  do {
    struct timespec step = NextStep(&wait);
    ready = NEXT(ppoll)(watched, count, limit != NULL ? &step : NULL, mask);
  } while (ready == 0 && RestOf(&wait) > 0);
  EndWait(&wait, 0);
  return ready;
}

EXPORT int poll(struct pollfd* watched, nfds_t count, int limit_ms) {
  struct timespec limit = ToTimespec(limit_ms * kMillisecond_ns);
  return ppoll(watched, count, limit_ms >= 0 ? &limit : NULL, NULL);
}

int __poll_chk(struct pollfd* watched, nfds_t count, int limit_ms, size_t bytes);

// What a fortified program calls instead.
EXPORT int __poll_chk(struct pollfd* watched, nfds_t count, int limit_ms, size_t bytes) {
  if (bytes / sizeof *watched < count) abort();
  return poll(watched, count, limit_ms);
}

static void CopySet(fd_set* to, const fd_set* from) {
  if (to != NULL) *to = *from;
}

// One look at the sets, which are as they were again when nothing has happened.
static int SelectOnce(int count, fd_set* sets[3], const struct timespec* step,
                      const sigset_t* mask) {
  fd_set before[3];
  for (int i = 0; i < 3; i++) {
    if (sets[i] != NULL) before[i] = *sets[i];
  }
  int ready = NEXT(pselect)(count, sets[0], sets[1], sets[2], step, mask);
  for (int i = 0; ready == 0 && i < 3; i++) CopySet(sets[i], &before[i]);
  return ready;
}

// *rest_ns, where it is asked for, is what is left of the limit in the end.
static int SelectUntil(int count, fd_set* sets[3], int64_t limit_ns, const sigset_t* mask,
                       int64_t* rest_ns) {
  struct Wait wait;
  int ready;
  BeginWait(&wait, limit_ns);
  do {
    struct timespec step = NextStep(&wait);
    ready = SelectOnce(count, sets, limit_ns != kNever_ns ? &step : NULL, mask);
  } while (ready == 0 && RestOf(&wait) > 0);
  if (rest_ns != NULL) *rest_ns = RestOf(&wait) > 0 ? RestOf(&wait) : 0;
  EndWait(&wait, 0);
  for (int i = 0; ready == 0 && i < 3; i++) {
    if (sets[i] != NULL) FD_ZERO(sets[i]);
  }
  return ready;
}

EXPORT int pselect(int count, fd_set* restrict readable, fd_set* restrict writable,
                   fd_set* restrict failed, const struct timespec* restrict limit,
                   const sigset_t* restrict mask) {
  fd_set* sets[3] = {readable, writable, failed};
  return SelectUntil(count, sets, limit != NULL ? FromTimespec(*limit) : kNever_ns, mask, NULL);
}

// Leaves in `limit` what is left of it, as the system's does.
EXPORT int select(int count, fd_set* restrict readable, fd_set* restrict writable,
                  fd_set* restrict failed, struct timeval* restrict limit) {
  fd_set* sets[3] = {readable, writable, failed};
  if (limit == NULL) return SelectUntil(count, sets, kNever_ns, NULL, NULL);
  int64_t rest_ns, limit_ns = FromTimeval(*limit);
  int first = FirstOf(count, readable);
  int ready = SelectUntil(count, sets, limit_ns, NULL, &rest_ns);
  if (limit_ns == 0) RememberLook(first, ready);
  *limit = ToTimeval(rest_ns);
  return ready;
}

// Sockets with limits of time.

// The limits that the system gets are the real steps in which the clock is looked at.
EXPORT int setsockopt(int descriptor, int level, int option, const void* value, socklen_t bytes) {
  struct timeval step;
  int is_limit = level == SOL_SOCKET && (option == SO_RCVTIMEO || option == SO_SNDTIMEO);
  if (is_limit && bytes == sizeof step && descriptor >= 0 && descriptor < kSockets) {
    int64_t limit_ns = FromTimeval(*(const struct timeval*)value);
    *(option == SO_RCVTIMEO ? &receive_limits_ns[descriptor] : &send_limits_ns[descriptor]) =
        limit_ns;
    step = ToTimeval((int64_t)((double)limit_ns / times_faster) + kMicrosecond_ns);
    if (limit_ns > 0) value = &step;
  }
  return NEXT(setsockopt)(descriptor, level, option, value, bytes);
}

static void BeginSocketWait(struct Wait* wait, const _Atomic int64_t* limits_ns, int descriptor) {
  int64_t limit_ns = descriptor >= 0 && descriptor < kSockets ? limits_ns[descriptor] : 0;
  BeginWait(wait, limit_ns > 0 ? limit_ns : kNever_ns);
}

// Whether a call on a socket met only the end of a step.
static int IsToGoOn(const struct Wait* wait, ssize_t result) {
  return result < 0 && errno == EAGAIN && wait->end_ns != kNever_ns && RestOf(wait) > 0;
}

EXPORT ssize_t recv(int descriptor, void* buffer, size_t bytes, int flags) {
  struct Wait wait;
  ssize_t result;
  BeginSocketWait(&wait, receive_limits_ns, descriptor);
  do {
    result = NEXT(recv)(descriptor, buffer, bytes, flags);
  } while (IsToGoOn(&wait, result));
  EndWait(&wait, 0);
  return result;
}

EXPORT ssize_t send(int descriptor, const void* buffer, size_t bytes, int flags) {
  struct Wait wait;
  ssize_t result;
  BeginSocketWait(&wait, send_limits_ns, descriptor);
  do {
    result = NEXT(send)(descriptor, buffer, bytes, flags);
  } while (IsToGoOn(&wait, result));
  EndWait(&wait, 0);
  return result;
}

EXPORT int connect(int descriptor, const struct sockaddr* address, socklen_t bytes) {
  struct Wait wait;
  int result;
  BeginSocketWait(&wait, send_limits_ns, descriptor);
  do {
    result = NEXT(connect)(descriptor, address, bytes);
  } while (IsToGoOn(&wait, result));
  EndWait(&wait, 0);
  return result;
}

// Threads. One counts from its creation to the moment that it has been joined, so that the clock
// does not hurry while its end has yet to be noticed.

EXPORT int pthread_create(pthread_t* restrict thread, const pthread_attr_t* restrict attributes,
                          void* (*start)(void*), void* restrict argument) {
  Lock();
  ++threads;
  SetClock();
  Unlock();
  int error = NEXT(pthread_create)(thread, attributes, start, argument);
  if (error != 0) {
    Lock();
    --threads;
    SetClock();
    Unlock();
  }
  return error;
}

EXPORT int pthread_join(pthread_t thread, void** result) {
  struct Wait wait;
  BeginWait(&wait, kNever_ns);
  int error = NEXT(pthread_join)(thread, result);
  EndWait(&wait, error == 0 ? 1 : 0);
  return error;
}
