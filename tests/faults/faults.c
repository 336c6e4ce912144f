// Loaded into the filter before everything else (LD_PRELOAD): lets one chosen call of a kind fail,
// or all from there on, as if the system had refused it.
//
// clang-format off
//   ZR7700_FAULT="KIND NUMBER once|ever ERRNO"  the call of the kind that fails, counted from main()
//   ZR7700_FAULT_COUNTS=FILE                    how many there were of each kind, written at the end
//   ZR7700_FAULT_CRASH=FILE                     where the process was when a signal ended it
// clang-format on
//
// Pauses are a tenth as long as they were meant. What the C library calls inside itself is not
// seen.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#define KINDS(X)                                                                                 \
  X(memory)                                                                                      \
  X(open)                                                                                        \
  X(read)                                                                                        \
  X(write)                                                                                       \
  X(pwrite)                                                                                      \
  X(lseek) X(stat) X(fstat) X(lstat) X(mmap) X(shm_open) X(ftruncate) X(posix_fallocate) X(poll) \
      X(socket) X(connect) X(rename) X(fsync) X(fchmod) X(fchown) X(close) X(pipe) X(fcntl)      \
          X(pthread_create) X(dlopen) X(unlink) X(bind) X(clock)

enum Kind {
#define ENUMERATE(kind) KIND_##kind,
  KINDS(ENUMERATE)
#undef ENUMERATE
      KIND_COUNT
};

static const char *const kind_names[] = {
#define NAME(kind) #kind,
    KINDS(NAME)
#undef NAME
};

static atomic_int counts[KIND_COUNT];
static atomic_int is_counting;
static int chosen_kind = -1, chosen_number, goes_on, chosen_errno;

extern void *__libc_malloc(size_t bytes);
extern void *__libc_calloc(size_t count, size_t bytes);
extern void *__libc_realloc(void *memory, size_t bytes);
extern void *__libc_memalign(size_t alignment, size_t bytes);

// Whether this call is to fail; errno is set then.
static int fails(enum Kind kind) {
  if (!is_counting) return 0;
  const int number = ++counts[kind];
  if ((int)kind != chosen_kind) return 0;
  if (number != chosen_number && !(goes_on && number > chosen_number)) return 0;
  errno = chosen_errno;
  return 1;
}

// The stand-in for the engine uses the heap for its records; its losses are its own.
static int is_engines(void) {
  void *frames[12];
  const int depth = backtrace(frames, 12);
  for (int i = 0; i < depth; ++i) {
    Dl_info info;
    if (dladdr(frames[i], &info) != 0 && strstr(info.dli_fname, "/Frameworks/") != NULL) return 1;
  }
  return 0;
}

static int memory_fails(void) { return is_counting && !is_engines() && fails(KIND_memory); }

#define REAL(name) ((__typeof__(&name))next_of(#name))
static void *next_of(const char *name) { return dlsym(RTLD_NEXT, name); }

void *malloc(size_t bytes) { return memory_fails() ? NULL : __libc_malloc(bytes); }
void *calloc(size_t count, size_t bytes) {
  return memory_fails() ? NULL : __libc_calloc(count, bytes);
}
void *realloc(void *memory, size_t bytes) {
  return memory_fails() ? NULL : __libc_realloc(memory, bytes);
}
void *memalign(size_t alignment, size_t bytes) {
  return memory_fails() ? NULL : __libc_memalign(alignment, bytes);
}
void *aligned_alloc(size_t alignment, size_t bytes) { return memalign(alignment, bytes); }
int posix_memalign(void **memory, size_t alignment, size_t bytes) {
  void *const made = memalign(alignment, bytes);
  if (made == NULL) return ENOMEM;
  *memory = made;
  return 0;
}

// FORWARD(kind, result, name, parameters, arguments, failure): a call as it is, but for the fault.
#define FORWARD(kind, result, name, parameters, arguments, failure) \
  result name parameters {                                          \
    if (fails(KIND_##kind)) return failure;                         \
    return REAL(name) arguments;                                    \
  }

static int takes_mode(int flags) { return (flags & O_CREAT) != 0; }
#define OPEN(name)                                                    \
  int name(const char *path, int flags, ...) {                        \
    va_list more;                                                     \
    va_start(more, flags);                                            \
    const mode_t mode = takes_mode(flags) ? va_arg(more, mode_t) : 0; \
    va_end(more);                                                     \
    if (fails(KIND_open)) return -1;                                  \
    return REAL(name)(path, flags, mode);                             \
  }
OPEN(open)
OPEN(open64)

int __open_2(const char *path, int flags) { return open(path, flags); }
int __open64_2(const char *path, int flags) { return open(path, flags); }

FORWARD(read, ssize_t, read, (int file, void *bytes, size_t count), (file, bytes, count), -1)
ssize_t __read_chk(int file, void *bytes, size_t count, size_t room);
ssize_t __read_chk(int file, void *bytes, size_t count, size_t room) {
  if (count > room) abort();
  return read(file, bytes, count);
}
FORWARD(write, ssize_t, write, (int file, const void *bytes, size_t count), (file, bytes, count),
        -1)
FORWARD(pwrite, ssize_t, pwrite, (int file, const void *bytes, size_t count, off_t at),
        (file, bytes, count, at), -1)
FORWARD(pwrite, ssize_t, pwrite64, (int file, const void *bytes, size_t count, off64_t at),
        (file, bytes, count, at), -1)
FORWARD(lseek, off_t, lseek, (int file, off_t at, int whence), (file, at, whence), -1)
FORWARD(stat, int, stat, (const char *restrict path, struct stat *restrict info), (path, info), -1)
FORWARD(fstat, int, fstat, (int file, struct stat *info), (file, info), -1)
FORWARD(lstat, int, lstat, (const char *restrict path, struct stat *restrict info), (path, info),
        -1)
FORWARD(mmap, void *, mmap, (void *at, size_t bytes, int rights, int flags, int file, off_t from),
        (at, bytes, rights, flags, file, from), MAP_FAILED)
FORWARD(shm_open, int, shm_open, (const char *name, int flags, mode_t mode), (name, flags, mode),
        -1)
FORWARD(ftruncate, int, ftruncate, (int file, off_t bytes), (file, bytes), -1)
FORWARD(posix_fallocate, int, posix_fallocate, (int file, off_t from, off_t bytes),
        (file, from, bytes), chosen_errno)
FORWARD(poll, int, poll, (struct pollfd * files, nfds_t count, int milliseconds),
        (files, count, milliseconds > 0 ? (milliseconds + 9) / 10 : milliseconds), -1)
int __poll_chk(struct pollfd *files, nfds_t count, int milliseconds, size_t room);
int __poll_chk(struct pollfd *files, nfds_t count, int milliseconds, size_t room) {
  if (count * sizeof *files > room) abort();
  return poll(files, count, milliseconds);
}
FORWARD(socket, int, socket, (int domain, int type, int protocol), (domain, type, protocol), -1)
FORWARD(connect, int, connect, (int file, const struct sockaddr *to, socklen_t bytes),
        (file, to, bytes), -1)
FORWARD(bind, int, bind, (int file, const struct sockaddr *to, socklen_t bytes), (file, to, bytes),
        -1)
FORWARD(rename, int, rename, (const char *from, const char *to), (from, to), -1)
FORWARD(unlink, int, unlink, (const char *path), (path), -1)
FORWARD(fsync, int, fsync, (int file), (file), -1)
FORWARD(fchmod, int, fchmod, (int file, mode_t mode), (file, mode), -1)
FORWARD(fchown, int, fchown, (int file, uid_t owner, gid_t group), (file, owner, group), -1)
FORWARD(pipe, int, pipe, (int ends[2]), (ends), -1)
FORWARD(pipe, int, pipe2, (int ends[2], int flags), (ends, flags), -1)
FORWARD(pthread_create, int, pthread_create,
        (pthread_t *restrict thread, const pthread_attr_t *restrict attributes,
         void *(*work)(void *), void *restrict context),
        (thread, attributes, work, context), chosen_errno)
FORWARD(dlopen, void *, dlopen, (const char *path, int flags), (path, flags), NULL)
FORWARD(clock, int, clock_gettime, (clockid_t clock, struct timespec *now), (clock, now), -1)

// A close that fails has closed all the same.
int close(int file) {
  const int failed = fails(KIND_close);
  const int result = REAL(close)(file);
  if (failed) errno = chosen_errno;
  return failed ? -1 : result;
}

#define FCNTL(name)                              \
  int name(int file, int command, ...) {         \
    va_list more;                                \
    va_start(more, command);                     \
    void *const argument = va_arg(more, void *); \
    va_end(more);                                \
    if (fails(KIND_fcntl)) return -1;            \
    return REAL(name)(file, command, argument);  \
  }
FCNTL(fcntl)
FCNTL(fcntl64)

static void tell_crash(int number) {
  void *frames[64];
  const char *const path = getenv("ZR7700_FAULT_CRASH");
  is_counting = 0;
  const int file = path != NULL ? REAL(open)(path, O_WRONLY | O_CREAT | O_TRUNC, 0600) : -1;
  if (file >= 0) backtrace_symbols_fd(frames, backtrace(frames, 64), file);
  raise(number);
}

static void write_counts(void) {
  const char *const path = getenv("ZR7700_FAULT_COUNTS");
  is_counting = 0;
  FILE *const file = path != NULL ? fopen(path, "w") : NULL;
  if (file == NULL) return;
  for (int i = 0; i < KIND_COUNT; ++i) fprintf(file, "%s %d\n", kind_names[i], counts[i]);
  fclose(file);
}

static void take_orders(void) {
  const char *const fault = getenv("ZR7700_FAULT");
  char kind[32], mode[8];
  if (fault == NULL) return;
  if (sscanf(fault, "%31s %d %7s %d", kind, &chosen_number, mode, &chosen_errno) != 4) abort();
  goes_on = strcmp(mode, "ever") == 0;
  for (int i = 0; i < KIND_COUNT; ++i) {
    if (strcmp(kind_names[i], kind) == 0) chosen_kind = i;
  }
  if (chosen_kind < 0) abort();
}

static int (*filters_main)(int, char **, char **);

static int counted_main(int argc, char **argv, char **environment) {
  void *frames[4];
  backtrace(frames, 4);  // loads what it needs, while there is memory
  const int signals[] = {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL};
  struct sigaction action = {.sa_handler = tell_crash, .sa_flags = (int)SA_RESETHAND | SA_NODEFER};
  for (size_t i = 0; i < sizeof signals / sizeof *signals; ++i)
    sigaction(signals[i], &action, NULL);
  take_orders();
  atexit(write_counts);
  is_counting = 1;
  return filters_main(argc, argv, environment);
}

// The first thing that a program calls. What starts the filter has the same environment, and is
// left alone.
typedef int StartMain(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(void),
                      void (*fini)(void), void (*end)(void), void *stack);
StartMain __libc_start_main;
int __libc_start_main(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(void),
                      void (*fini)(void), void (*end)(void), void *stack) {
  StartMain *const real = (StartMain *)next_of("__libc_start_main");
  const char *const name = strrchr(argv[0], '/');
  filters_main = main;
  const int is_filter = name != NULL && strcmp(name, "/rastertoZR7700") == 0;
  return real(is_filter ? counted_main : main, argc, argv, init, fini, end, stack);
}
