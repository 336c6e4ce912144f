"""Compares everything that a job left behind with what the model expects."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import log_compare


def first_difference(name, got, wanted):
    for i, (a, b) in enumerate(zip(got, wanted)):
        assert a == b, f"{name}, entry {i}: got {a!r}, expected {b!r}"
    assert len(got) == len(wanted), (
        f"{name}: got {len(got)} entries, expected {len(wanted)}; beyond: "
        f"{(got[len(wanted):] or wanted[len(got):])[:5]!r}")


def log(result, model):
    log_compare.check_reader(result.log)
    main, threads = log_compare.split(result.log)
    first_difference("log", main, model.log)
    first_difference("status thread", [log_compare.collapse(page) for page in threads],
                     model.thread)


def engine(result, model):
    first_difference("engine calls", result.calls, model.calls)
    assert result.pixels == model.bands, bytes_differ("bands", result.pixels, model.bands)
    assert result.stdout == model.stdout, bytes_differ("standard output", result.stdout,
                                                       model.stdout)


def bytes_differ(name, got, wanted):
    at = next((i for i, (a, b) in enumerate(zip(got, wanted)) if a != b),
              min(len(got), len(wanted)))
    return (f"{name}: {len(got)} bytes, expected {len(wanted)}; from byte {at}: "
            f"{got[at:at + 16].hex()} for {wanted[at:at + 16].hex()}")


def job(result, model):
    """Everything."""
    assert result.status == model.status, result.stderr
    assert result.stderr == model.stderr
    log(result, model)
    engine(result, model)
    assert result.ini == model.ini
    assert not result.shared_memory_left


def run(job_object, **model_arguments):
    """Runs a job and compares everything with a model of it. What the model must be told beyond the
    job's own description comes in model_arguments."""
    from expected import Model
    settings = job_object.settings if isinstance(job_object.settings, dict) else None
    arguments = {"pages": job_object.pages, "marked": job_object.choices, "settings": settings,
                 "script": job_object.script, "ini": job_object.ini,
                 "record": job_object.record}
    arguments.update(model_arguments)
    model = Model(**arguments).run()
    result = job_object.run()
    job(result, model)
    return result
