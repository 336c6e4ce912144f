"""Texts that the filter writes, word for word."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

STATES_WITHDRAWN = ("STATE: -marker-supply-empty\n"
                    "STATE: -marker-supply-low\n"
                    "STATE: -media-needed\n")

COMMUNICATE = ("Unable to communicate with the printer.  Restart the printer and try your job "
               "again.\n")
_CHANGE = ("  Press the button to change the cartridge. Install the new cartridge.  Finally press "
           "the button to complete the install.\n")
INVALID = "The Color cartridge is invalid!" + _CHANGE
MISSING = "The Color cartridge is missing!" + _CHANGE
OUT_OF_INK = "The cartridge is out of ink." + _CHANGE
ALIGN = ("The cartridge needs aligning.  Please press Stop Job, launch the Printer Configuation "
         "Utility, and select 'Align Cartridge' to align the cartride.  Once the alignment is "
         "complete close the utility and select 'Resume Job' to continue your job.\n\nTo launch "
         "the Printer Configuration Utility, highlight the printer in the printer list and select "
         "'Configure'.\n")
INK_EMPTY = "Ink is low.  Install a new cartridge.\n"
INK_LOW = ("Ink is low.  Install a new cartridge or press the button on top of the printer to "
           "continue using the current cartridge.\n")
BIN_EMPTY = ("Disc input bin is empty.  Open the cover, add more discs, and close the cover to "
             "continue.\n")

RECOVERED_ALL = "".join("ERROR: recovered: " + text
                        for text in (COMMUNICATE, ALIGN, OUT_OF_INK, INVALID, MISSING))

# Condition: (STATE reason or none, severity, text, whether "Continuing" is said, log word).
CONDITIONS = {
    "ink empty": ("marker-supply-empty", "unrecoverable", INK_EMPTY, False),
    "ink low": ("marker-supply-low", "recoverable", INK_LOW, True),
    "paper out": ("media-needed", "recoverable", BIN_EMPTY, True),
    "alignment needed": (None, "recoverable", ALIGN, True),
}


def condition_on(name):
    reason, severity, text, _ = CONDITIONS[name]
    return (f"STATE: +{reason}\n" if reason else "") + f"ERROR: {severity}: {text}"


def condition_off(name):
    reason, _, text, continuing = CONDITIONS[name]
    return ((f"STATE: -{reason}\n" if reason else "")
            + ("ERROR: recovered: Continuing\n" if continuing else "")
            + f"ERROR: recovered: {text}")
