// The clip table: for every line of the page image, how far the printable ring of the disc reaches
// from the line's centre.
//
// One buffer of `clipBufferBytes` bytes per page: entry y (ClipEntry) serves line y. An outer value
// of 0 means no outer limit, an inner value of 0 no hole. All lengths are dots. The job variables
// own the table of the newest page until ClipDataBufsDelete; tables of earlier pages stay allocated
// until the process ends. All functions: main thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_CLIP_BUFFERS_H_
#define ZR7700_ENGINE_CLIP_BUFFERS_H_

#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

// Disc forms with an outline of their own; any other form below 7 is the round disc.
inline constexpr uint32_t OEM_FORM_BUSINESS_CD = 4;
inline constexpr uint32_t kCappedForm = 5;
inline constexpr uint32_t kFirstInvalidForm = 7;

// Half-widths in dots, measured from the line's centre.
struct ClipEntry {
  uint16_t outer;
  uint16_t inner;
};

inline constexpr uint32_t kClipEntryBytes = 4;
static_assert(sizeof(ClipEntry) == kClipEntryBytes);

// Makes and fills the table for the page that `variables` describe. False, with the reason in the
// log and the clip fields emptied, when the form is invalid, the geometry is beyond the disc or
// there is no memory.
bool ClipDataBufsCreate(JobVariables& variables);

// The bytes of one buffer.
uint32_t ClipDataBufsSize(const JobVariables& variables);

// The buffers that the disc form needs: 1, or all bits set (logged) for an invalid form.
uint32_t ClipDataBufsRequired(const JobVariables& variables);

// Fills buffer number `index`, `size_bytes` bytes at `buffer`. False (logged) when the buffer is
// null or too small, or the geometry is refused.
bool ClipDataBufsInitialize(const JobVariables& variables, uint8_t* buffer, uint32_t size_bytes,
                            uint32_t index);

// Gives the newest table back and empties the three clip fields. False (logged), with the fields as
// they were, when the record counts buffers that it does not have.
bool ClipDataBufsDelete(JobVariables& variables);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_CLIP_BUFFERS_H_
