// The texts that tell a person what the printer needs, as CUPS shows them. Each ends its line, and
// each stands in one piece: whoever searches for what CUPS shows finds it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_USER_TEXTS_H_
#define ZR7700_STATUS_USER_TEXTS_H_

#define ZR7700_RECOVERABLE "ERROR: recoverable: "
#define ZR7700_UNRECOVERABLE "ERROR: unrecoverable: "
#define ZR7700_RECOVERED "ERROR: recovered: "

#define ZR7700_TEXT_CONTINUING "Continuing\n"
#define ZR7700_TEXT_NO_COMMUNICATION \
  "Unable to communicate with the printer.  Restart the printer and try your job again.\n"
#define ZR7700_TEXT_ALIGN                                                                                                                                                                                                                                  \
  "The cartridge needs aligning.  Please press Stop Job, launch the Printer Configuation Utility, and select 'Align Cartridge' to align the cartride.  Once the alignment is complete close the utility and select 'Resume Job' to continue your job.\n\n" \
  "To launch the Printer Configuration Utility, highlight the printer in the printer list and select 'Configure'.\n"
#define ZR7700_TEXT_OUT_OF_INK \
  "The cartridge is out of ink.  Press the button to change the cartridge. Install the new cartridge.  Finally press the button to complete the install.\n"
#define ZR7700_TEXT_INVALID_CARTRIDGE \
  "The Color cartridge is invalid!  Press the button to change the cartridge. Install the new cartridge.  Finally press the button to complete the install.\n"
#define ZR7700_TEXT_MISSING_CARTRIDGE \
  "The Color cartridge is missing!  Press the button to change the cartridge. Install the new cartridge.  Finally press the button to complete the install.\n"
// Shown when the ink is empty, whatever it says.
#define ZR7700_TEXT_INK_EMPTY "Ink is low.  Install a new cartridge.\n"
#define ZR7700_TEXT_INK_LOW \
  "Ink is low.  Install a new cartridge or press the button on top of the printer to continue using the current cartridge.\n"
#define ZR7700_TEXT_BIN_EMPTY \
  "Disc input bin is empty.  Open the cover, add more discs, and close the cover to continue.\n"

#define ZR7700_TEXT_NO_MEMORY "ERROR: There is no memory for the job.  Print it again later.\n"

#endif  // ZR7700_STATUS_USER_TEXTS_H_
