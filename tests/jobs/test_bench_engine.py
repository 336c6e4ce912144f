"""The recording engine through the plain C interface."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import ctypes
import shutil

import job as jobs

CALLBACK = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.POINTER(ctypes.c_uint8), ctypes.c_uint32)
SIMPLE = ["SetLeftMargin", "SetTopMargin", "SetPrintableWidth", "SetPrintableHeight",
          "SetPhysicalWidth", "SetHPERasterFormat", "SetPageIntent", "SetMediaType",
          "SetOutputPrintQuality", "SetPaperTray", "SetImageSharpeningLevel"]


def load(tmp_path, monkeypatch, script, name="recording_engine"):
    """A copy of its own for each test: a library counts its calls from the moment it is loaded."""
    (tmp_path / "script").write_text(script)
    for variable in ("TRACE", "SCRIPT", "PIXELS"):
        monkeypatch.setenv(f"ZR7700_ENGINE_{variable}", str(tmp_path / variable.lower()))
    library = tmp_path / "engine.so"
    shutil.copy(jobs.engine_folder() / f"{name}.so", library)
    lib = ctypes.CDLL(str(library))
    lib.CreateHostPrintEngine.restype = ctypes.c_void_p
    return lib


def trace(tmp_path):
    return (tmp_path / "trace").read_text().splitlines()


def test_every_call_is_written_down_with_its_arguments(tmp_path, monkeypatch):
    lib = load(tmp_path, monkeypatch, "")
    h = ctypes.c_void_p(lib.CreateHostPrintEngine())
    assert lib.HPEInitialize(h, b"a", b"b", b"c", b"d") == 0
    assert lib.SetInputResolution(h, 1, 600) == 0
    assert lib.SetInstalledCartridge(h, 0, 4, 1) == 0
    assert lib.SetAlignmentInformation(h, 14, 255) == 0
    for i, entry in enumerate(SIMPLE):
        assert getattr(lib, entry)(h, i) == 0
    assert lib.SetLeftMargin(h, -5) == 0
    assert lib.HPEStartPage(h) == 0
    assert lib.HPESendBand(h, 0, 7, 1, 2, 8, b"12345678") == 0
    assert lib.HPEEndPage(h, 0) == 0 and lib.HPEEndDoc(h, 0) == 0
    lib.DestroyHostPrintEngine(h)
    assert trace(tmp_path)[0] == f"LOADED {tmp_path}/engine.so"
    assert trace(tmp_path)[1:] == (
        ["CreateHostPrintEngine", "HPEInitialize H a b c d", "SetInputResolution H 1 600",
         "SetInstalledCartridge H 0 4 1", "SetAlignmentInformation H 14 255"]
        + [f"{entry} H {i}" for i, entry in enumerate(SIMPLE)]
        + ["SetLeftMargin H -5", "HPEStartPage H", "HPESendBand H 0 7 1 2 8", "HPEEndPage H 0",
           "HPEEndDoc H 0", "DestroyHostPrintEngine H"])
    assert (tmp_path / "pixels").read_bytes() == b"12345678"


def test_the_script_gives_results_and_emits_blocks(tmp_path, monkeypatch):
    (tmp_path / "block").write_bytes(b"file")
    lib = load(tmp_path, monkeypatch, "HPEStartPage 2 return -7\nHPEStartPage 2 emit 010203\n"
               f"HPEEndPage * emitfile {tmp_path}/block\nHPEEndPage 1 copy {tmp_path}/block "
               f"{tmp_path}/copied\n")
    h = ctypes.c_void_p(lib.CreateHostPrintEngine())
    blocks = []

    def take(_, data, length):
        blocks.append(bytes(data[:length]))
        data[0] = 0xEE

    taker = CALLBACK(take)
    lib.HPEStartDoc(h, taker, b"table", 0, 0, 142, ctypes.c_void_p(4096))
    assert [lib.HPEStartPage(h) for _ in range(3)] == [0, -7, 0]
    lib.HPEEndPage(h, 0)
    assert blocks == [b"\1\2\3", b"file"]
    assert (tmp_path / "copied").read_bytes() == b"file"
    assert "callback 3 ee0203" in trace(tmp_path)
    assert "HPEStartDoc H CB table 0 0 142 CTX" in trace(tmp_path)


def test_a_null_handle_can_be_asked_for(tmp_path, monkeypatch):
    lib = load(tmp_path, monkeypatch, "CreateHostPrintEngine 1 return 0\n")
    assert lib.CreateHostPrintEngine() is None
    lib.HPEEndDoc(None, 0)
    assert trace(tmp_path)[-1] == "HPEEndDoc NULL 0"


def test_a_variant_lacks_its_entry_and_nothing_else(tmp_path, monkeypatch):
    lib = load(tmp_path, monkeypatch, "", "engine_without_SetPaperTray")
    assert not hasattr(lib, "SetPaperTray")
    assert all(hasattr(lib, entry) for entry in SIMPLE if entry != "SetPaperTray")
