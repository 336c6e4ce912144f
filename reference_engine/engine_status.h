// The error codes of the open engine. 2 is left out: it is what a missing entry answers.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_ENGINE_STATUS_H_
#define ZR7700_REFERENCE_ENGINE_ENGINE_STATUS_H_

#include <cstdint>

#include "zr7700/host_print_engine.h"

namespace zr7700::reference_engine {

enum EngineStatus : int32_t {
  kOk = HPE_OK,
  // The handle is null or of no living instance.
  kBadHandle = 0x101,
  // The entry is not due now: no document, no page, a page too many ...
  kWrongOrder = 0x102,
  // An argument is outside of what the entry takes, or a needed pointer is null.
  kBadValue = 0x103,
  // The colour table is missing, damaged or of another kind.
  kBadColorTable = 0x104,
  // The ini file names a printer that this engine does not know, or is there but no regular file of
  // at most 64 KiB that the engine may read.
  kBadConfiguration = 0x105,
  // The properties do not make a page: a width, height or resolution is missing, or the margins
  // leave nothing within the carriage's reach.
  kBadGeometry = 0x106,
  // Out of memory. A page that is open is spoilt.
  kNoMemory = 0x107,
  // The output callback called an entry of the instance that was just calling it.
  kReentered = 0x108,
  // Something was thrown while this page was open, so its lines are not whole: nothing is added to
  // it any more. From HPEEndPage: the page has been given up.
  kPageSpoilt = 0x109,
  // The output callback threw something.
  kCallbackFailed = 0x10A,
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_ENGINE_STATUS_H_
