// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_buffers.h"

#include <cstdlib>
#include <vector>

#include "base/log.h"
#include "base/out_of_memory.h"
#include "engine/clip_geometry.h"

namespace zr7700 {
namespace {

constexpr uint32_t kFailed = UINT32_MAX;

// The tables of earlier pages, which live as long as the process: kept within reach so that they
// are no leak.
std::vector<uint8_t*>& EarlierTables() {
  static auto* const tables = new std::vector<uint8_t*>;
  return *tables;
}

bool Allocate(JobVariables& variables) {
  const size_t bytes = size_t{variables.clipBufCount} * variables.clipBufSize;
  if (bytes == 0) return true;
  if (variables.clipDataBufs != nullptr) EarlierTables().push_back(variables.clipDataBufs);
  variables.clipDataBufs = static_cast<uint8_t*>(calloc(bytes, 1));
  if (variables.clipDataBufs != nullptr) return true;
  variables.clipBufCount = 0;
  LogMessage(kLogDetail, "ERROR:  OemClipDataBufsCreate: alloc failed!");
  ReportNoMemory();
  return false;
}

bool InitializeAll(JobVariables& variables) {
  uint8_t* buffer = variables.clipDataBufs;
  for (uint32_t i = 0; i < variables.clipBufCount; ++i) {
    if (!ClipDataBufsInitialize(variables, buffer, variables.clipBufSize, i)) {
      LogMessage(kLogDetail, "ERROR:  OemClipDataBufsCreate: initialization failure!");
      variables.clipBufCount = i;
      return false;
    }
    buffer += variables.clipBufSize;
  }
  return true;
}

bool Create(JobVariables& variables) {
  const uint32_t size_bytes = ClipDataBufsSize(variables);
  if (size_bytes == kFailed) {
    LogMessage(kLogDetail, "ERROR:  OemClipDataBufsCreate: failed to get size!\n");
    return false;
  }
  variables.clipBufSize = size_bytes;
  const uint32_t count = ClipDataBufsRequired(variables);
  if (count == kFailed) {
    LogMessage(kLogDetail, "ERROR:  OemClipDataBufsCreate: failed to get count!");
    return false;
  }
  variables.clipBufCount = count;
  return Allocate(variables) && InitializeAll(variables);
}

bool Initialize(const JobVariables& variables, uint8_t* buffer, uint32_t size_bytes) {
  if (buffer == nullptr) {
    LogMessage(kLogDetail, "ERROR:  ClipDataBufsInitialize(): invalid buffer!");
    return false;
  }
  if (size_bytes < ClipDataBufsSize(variables)) {
    LogMessage(kLogDetail, "ERROR:  ClipDataBufsInitialize(): buffer too small!");
    return false;
  }
  // calloc aligns for any type, and a buffer is a whole number of entries further on.
  auto* const table = reinterpret_cast<ClipEntry*>(buffer);
  return ClipGetData(variables, {table, variables.clipBufferBytes / kClipEntryBytes});
}

}  // namespace

uint32_t ClipDataBufsSize(const JobVariables& variables) { return variables.clipBufferBytes; }

uint32_t ClipDataBufsRequired(const JobVariables& variables) {
  if (variables.discForm < kFirstInvalidForm) return 1;
  LogMessage(kLogClipping, "ClipDataBufsRequired: invalid form!");
  return kFailed;
}

bool ClipDataBufsInitialize(const JobVariables& variables, uint8_t* buffer, uint32_t size_bytes,
                            [[maybe_unused]] uint32_t index) {
  if (Initialize(variables, buffer, size_bytes)) return true;
  LogMessage(kLogTrace, "ClipDataBufsInitialize: returning (FALSE)");
  return false;
}

bool ClipDataBufsCreate(JobVariables& variables) {
  if (Create(variables)) return true;
  ClipDataBufsDelete(variables);
  LogMessage(kLogTrace, "ClipDataBufsCreate: returning (FALSE)");
  return false;
}

bool ClipDataBufsDelete(JobVariables& variables) {
  if (variables.clipDataBufs == nullptr && variables.clipBufCount != 0) {
    LogMessage(kLogDetail, "ERROR:  OemClipDataBufsDelete(): no memory!");
    LogMessage(kLogTrace, "ClipDataBufsDelete: returning (FALSE)");
    return false;
  }
  if (variables.clipDataBufs != nullptr) {
    LogMessage(kLogTrace, "OemClipDataBufsDelete: FREE clipDataBufs");
    free(variables.clipDataBufs);
  }
  variables.clipBufCount = 0;
  variables.clipBufSize = 0;
  variables.clipDataBufs = nullptr;
  return true;
}

}  // namespace zr7700
