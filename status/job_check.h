// The check of the printer before the job and before every page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_JOB_CHECK_H_
#define ZR7700_STATUS_JOB_CHECK_H_

namespace zr7700 {

// Reads the printer's status, tells CUPS (and once a call the printer utility) of a missing or
// invalid cartridge, of alignment needed and of empty ink, and tries again every second until the
// printer is ready, without limit. Copies the alignment values, the readiness letter and the ink
// limits into the job variables. `page` is 0 for the check before the document is set up, which
// also loads the engine family of the cartridge, else the number of pages begun. True to go on;
// false when the job is cancelled, when the status could not be read 15 times (page 0) or 5 times
// after the first, or when the engine does not load. Main thread, while no status thread runs.
bool StartOfPageJobCheck(int page);

}  // namespace zr7700

#endif  // ZR7700_STATUS_JOB_CHECK_H_
