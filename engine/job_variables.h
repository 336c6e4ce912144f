// The job variables: the one process-wide record through which the job driver, the engine's side
// and the start-of-page check share the job's state.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_JOB_VARIABLES_H_
#define ZR7700_ENGINE_JOB_VARIABLES_H_

#include <cstdint>

#include "base/paths.h"
#include "zr7700/host_print_engine.h"

namespace zr7700 {

// Page geometry is in dots at the page's resolution; OuterMargin and topDiscOffset are in dots at
// 600 dpi. Every field is written and read by the main thread only; the file that writes it is
// named where it is not plain.
struct JobVariables {
  // From the PPD's choices (ppd_choices.cc); 0 where nothing is marked.
  uint8_t ColorMatching;       // 1 standard, 2 best for photos
  uint8_t PrintQuality;        // 1 to 4
  uint8_t DiscSurfaceQuality;  // media type, 1 to 5
  uint8_t InkSaturation;       // percent

  // From the page's raster header (page.cc); the image is 2834 x 2834 before the first page.
  uint32_t imageHeight;
  uint32_t imageWidth;
  uint32_t horzResolution;  // dots per inch; 300 marks a draft
  uint32_t vertResolution;
  uint32_t pageHeight;
  uint32_t pageWidth;

  uint8_t alignmentSkip;  // nothing sets it: the alignment is always checked

  // Copies of settings and constants.
  int32_t FeedAdjust;
  uint32_t nPhotoThreshold;
  int32_t OutputDest;
  int32_t ImageSharpeningValue;
  uint32_t nRunCompValue;  // computed with as signed
  uint32_t nRunCompDiv;    // computed with as signed; 0 switches the ink limit off

  // From the printer's status (status/job_check.cc).
  uint8_t alignmentValue6;
  uint8_t alignmentValue14;
  uint32_t inkLimitLow;
  uint32_t inkLimitHigh;

  // The clip table, owned by clip_buffers.cc.
  uint32_t clipBufCount;
  uint32_t clipBufSize;
  uint8_t* clipDataBufs;

  // The printable rectangle: lines strictly between top and bottom are printed.
  uint16_t topOutputImage;
  uint16_t bottomOutputImage;
  uint32_t clipBufferBytes;
  uint32_t maxImageDots;
  uint32_t OuterMargin;
  uint32_t InnerDiam;  // tenths of a millimetre
  uint32_t discForm;   // 1 round disc, 4 business card, 5 capped width
  uint32_t leftOutputImage;
  uint32_t rightOutputImage;
  int32_t topDiscOffset;
  uint8_t bidirectional;

  // The engine family (engine_loader.cc); the paths are constants.
  uint8_t isHeron;
  paths::EngineFiles files;

  // Job options, and the printer's readiness letter as a flag.
  uint8_t SkipLowInkFWCheck;
  uint8_t SuppressStartingUtilityOnError;
  uint8_t statusLetterReady;
};

// True for the media (3, 4, 5: white polyester, semi-gloss, white matte) that take the
// high-quality margin, the glossy colour table and the ink limit.
inline bool IsHighQualityMedium(const JobVariables& variables) {
  return variables.DiscSurfaceQuality >= 3 && variables.DiscSurfaceQuality <= 5;
}

// True for a line within the printable band.
inline bool IsInPrintableBand(const JobVariables& variables, uint32_t y) {
  return variables.topOutputImage < y && y < variables.bottomOutputImage;
}

// The record, zero at start and never reset between pages.
extern JobVariables job_variables;

// The engine instance (main thread) that every entry is called with; null until the document is set
// up.
extern HPEHandle engineHandle;

}  // namespace zr7700

#endif  // ZR7700_ENGINE_JOB_VARIABLES_H_
