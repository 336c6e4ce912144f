"""A job in which the system refuses a call: no crash, no hang, no lost output, no lost ini file.

ZR7700_LONG=1 tries every call of a kind with every error; otherwise a sample with the first."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os

import pytest

from faulty_job import number, plain_job, run_faults

# docs/reliability.md says what follows from each. A call that is interrupted is called again, so
# that it fails once only.
ERRORS = {
    "open": ["EMFILE", "EACCES", "ENOENT", "ENFILE", "EIO", "ENOMEM"],
    "read": ["EIO", "EISDIR", "EINTR"],
    "write": ["ENOSPC", "EIO", "EFBIG", "EINTR", "EAGAIN"],
    "pwrite": ["ENOSPC", "EIO", "EFBIG", "EINTR"],
    "fstat": ["EIO", "ENOMEM"],
    "lstat": ["EACCES", "EIO"],
    "mmap": ["ENOMEM"],
    "shm_open": ["EACCES", "EMFILE", "ENOSPC"],
    "ftruncate": ["EIO", "EFBIG"],
    "posix_fallocate": ["ENOSPC"],
    "poll": ["ENOMEM", "EINTR"],
    "rename": ["EIO", "EACCES", "EBUSY", "ENOSPC"],
    "fsync": ["EIO", "ENOSPC"],
    "fchmod": ["EPERM", "EIO"],
    "close": ["EIO"],
    "pipe": ["EMFILE"],
    "fcntl": ["EINVAL", "EBADF"],
    "pthread_create": ["EAGAIN"],
    "dlopen": ["ENOENT"],
    "clock": ["EINVAL"],
}


def faults_of(kind):
    is_long = bool(os.environ.get("ZR7700_LONG"))
    count = plain_job().counts[kind]
    assert count > 0, f"a job makes no call of the kind {kind}"
    step = 1 if is_long else max(count // 4, 1)
    return [f"{kind} {n} {mode} {number(name)}"
            for n in range(1, count + 1, step)
            for name in (ERRORS[kind] if is_long else ERRORS[kind][:1])
            for mode in ("once", "ever") if mode == "once" or name not in ("EINTR", "EAGAIN")]


@pytest.mark.parametrize("kind", ERRORS)
def test_a_refused_call_loses_nothing(kind):
    jobs = run_faults(faults_of(kind))
    assert [text for tried in jobs for text in tried.complaints(plain_job())] == []
