// The engine's documents: one is opened at job start, and every page ends one and opens the next.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_DOCUMENT_H_
#define ZR7700_ENGINE_DOCUMENT_H_

#include <cups/ppd.h>

namespace zr7700 {

// Creates and initialises the engine, turns the PPD's marked choices into job variables, writes the
// engine's ini file and opens the first document. `ppd` is open and marked, and stays the caller's.
// False (logged) when the engine refuses to be initialised or to open the document; it is not
// destroyed then. Main thread, once a job, after the engine family is loaded.
bool DocumentSetup(ppd_file_t* ppd);

// Ends the engine's document and opens a new one, so that the page's bytes reach the printer now.
// The engine's answers are not acted on. Always true. Main thread.
bool RestartDocument();

// Ends the last document, gives the clip table back and destroys the engine. Always true: a failure
// is only logged. Main thread.
bool EndDocument();

}  // namespace zr7700

#endif  // ZR7700_ENGINE_DOCUMENT_H_
