// The 16 bytes that go to the printer before every page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_PRINT_HEADER_H_
#define ZR7700_ENGINE_PRINT_HEADER_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/job_variables.h"

namespace zr7700 {

using PrintHeader = std::array<uint8_t, 16>;

// The ink-use count from which the printer warns: the job's high limit when the low-ink check is to
// be skipped, else its low limit less an eighth. Any thread.
uint32_t InkWarningValue(const JobVariables& variables);

// The header, checksum included, for this ink warning value. Any thread.
PrintHeader BuildPrintHeader(const JobVariables& variables, uint32_t ink_warning);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_PRINT_HEADER_H_
