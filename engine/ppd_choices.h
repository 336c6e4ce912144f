// The PPD's marked choices as job variables.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_PPD_CHOICES_H_
#define ZR7700_ENGINE_PPD_CHOICES_H_

#include <cups/ppd.h>

#include "engine/job_variables.h"

namespace zr7700 {

// Each marked choice is logged and stored; an option without one leaves its field as it was, but
// for "Bidi", whose absence means both directions. `ppd` is open and marked, and stays the
// caller's. Main thread.

// "InnerDiameter", "Saturation" and "OuterMargin": numbers.
void ReadDiscChoices(ppd_file_t* ppd, JobVariables& variables);

// "MediaType", "PrintQuality", "ColorMatching" and "Bidi": keywords.
void ReadPrintChoices(ppd_file_t* ppd, JobVariables& variables);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_PPD_CHOICES_H_
