"""What holds for every cancelled job, and how long it may take from SIGTERM to its end."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import log_compare

# Seconds from SIGTERM to the end: with a printer that is well, and with any printer and any utility.
# CUPS kills after 30.
WELL_LIMIT = 3.0
LIMIT = 10.0

# Where nobody takes the output, which is given up after twenty seconds.
LIMIT_WITHOUT_A_READER = 22.0
GIVEN_UP = "     Nothing taken for 20 s after the cancel: output discarded"


def expect_cancelled(result, status, limit=WELL_LIMIT):
    """For a job whose handler was installed."""
    assert result.status == status, result.log[-5:]
    assert result.seconds_after_cancel < limit
    assert not result.shared_memory_left
    assert not [line for line in result.log if line.startswith("     BAILING")]
    log_compare.check_reader(result.log)
    log_compare.split(result.log)


def expect_document_ended(result):
    assert result.calls[-2:] == ["HPEEndDoc H 0", "DestroyHostPrintEngine H"]
    starts = sum(call.startswith("HPEStartDoc") for call in result.calls)
    assert starts == sum(call.startswith("HPEEndDoc") for call in result.calls)
