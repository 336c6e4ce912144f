// The start and the end of a page in the engine.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_PAGE_H_
#define ZR7700_ENGINE_PAGE_H_

#include <cups/raster.h>

namespace zr7700 {

// Opens the page that `header` describes: takes its geometry into the job variables, checks the
// raster format, builds the clip table, sends the print header, sets the engine's properties and
// starts its page. False (logged) at the first step that fails; what was done before stays done, a
// print header already sent included. Main thread.
bool StartPage(const cups_page_header2_t& header);

// Closes the engine's page. Always true: a failure is only logged. Main thread.
bool EndPage();

}  // namespace zr7700

#endif  // ZR7700_ENGINE_PAGE_H_
