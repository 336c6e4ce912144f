// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include "base/paths.h"

namespace zr7700 {
namespace {

// Written by the main thread while no status thread runs.
struct StatusMemory {
  int descriptor = -1;
  void* mapping = nullptr;
  size_t size_bytes = 0;
};
StatusMemory memory;

// The object's name is this job's to remove: what comes after that is another job's. Written by the
// main thread and the signal handler.
std::atomic<bool> has_name = false;
static_assert(std::atomic<bool>::is_always_lock_free);

bool IsOurs(int descriptor) {
  struct stat info;
  return fstat(descriptor, &info) == 0 && (info.st_uid == geteuid() || info.st_uid == 0);
}

// Gives the object its size, backed by memory where the system can promise that, so that touching
// it cannot fail later.
bool Reserve(int descriptor, size_t size_bytes) {
  [[maybe_unused]] const int resized = ftruncate(descriptor, static_cast<off_t>(size_bytes));
#ifndef __APPLE__
  if (posix_fallocate(descriptor, 0, static_cast<off_t>(size_bytes)) != 0) return false;
#endif
  struct stat info;
  return fstat(descriptor, &info) == 0 && info.st_size >= static_cast<off_t>(size_bytes);
}

// CUPS runs filters with a umask that would hide the object from everybody else.
void MakeReadable(int descriptor) {
  struct stat info;
  if (fstat(descriptor, &info) == 0) {
    fchmod(descriptor, (info.st_mode & 0777) | S_IRGRP | S_IROTH);
  }
}

void* Map(int descriptor, size_t size_bytes) {
  void* const mapping =
      mmap(nullptr, size_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  return mapping == MAP_FAILED ? nullptr : mapping;
}

bool IsCutShort() {
  struct stat info;
  return fstat(memory.descriptor, &info) != 0 ||
         info.st_size < static_cast<off_t>(memory.size_bytes);
}

}  // namespace

bool CreateStatusMemory(size_t size_bytes) {
  memory.size_bytes = std::min(size_bytes, kStatusRecordBytes);
  memory.descriptor = shm_open(paths::kStatusMemory, O_RDWR | O_CREAT, 0666);
  if (memory.descriptor >= 0 && !IsOurs(memory.descriptor)) {
    close(memory.descriptor);
    memory.descriptor = -1;
  }
  if (memory.descriptor < 0) return false;
  has_name = true;
  MakeReadable(memory.descriptor);
  if (Reserve(memory.descriptor, memory.size_bytes)) {
    memory.mapping = Map(memory.descriptor, memory.size_bytes);
  }
  if (memory.mapping == nullptr) return false;
  memset(memory.mapping, 0, memory.size_bytes);
  return true;
}

// Through the descriptor where the system can: should somebody have cut the object short, touching
// the mapping would end the process.
void PublishStatus(const PrinterStatusRecord& record) {
  if (memory.mapping == nullptr) return;
  if (pwrite(memory.descriptor, record.data(), memory.size_bytes, 0) > 0 || IsCutShort()) return;
  memcpy(memory.mapping, record.data(), memory.size_bytes);
}

void ReadPublishedStatus(PrinterStatusRecord& record) {
  if (memory.mapping == nullptr || IsCutShort()) return;
  memcpy(record.data(), memory.mapping, memory.size_bytes);
}

// POSIX names unlink, not shm_unlink, among what a signal handler may call; here it is a system
// call behind a name put together on the stack.
void UnlinkStatusMemory() {
  if (has_name.exchange(false)) shm_unlink(paths::kStatusMemory);
}

void CloseStatusMemory() {
  if (memory.descriptor < 0) return;
  close(memory.descriptor);
  if (memory.mapping != nullptr) munmap(memory.mapping, memory.size_bytes);
  memory = StatusMemory{};
  UnlinkStatusMemory();
}

}  // namespace zr7700
