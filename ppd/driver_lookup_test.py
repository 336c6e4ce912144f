"""How CUPS comes by the PPD of a new printer: its driver manager searches the installed .drv file
for what the device says of itself, and compiles the PPD from it."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import re
import subprocess

import pytest

HERE = pathlib.Path(__file__).parent
DRIVER_MANAGER = "/usr/lib/cups/daemon/cups-driverd"
BACKEND = (HERE / "../virtual_printer/backend.cc").read_text(encoding="utf-8")


@pytest.fixture(scope="module")
def manager(tmp_path_factory):
    """Runs the driver manager over a data folder as a package fills it: the .drv file with other
    drivers', its catalogues where the PPD compiler finds them (beside it they would be taken for
    drivers)."""
    data = tmp_path_factory.mktemp("cups")
    for folder in ("drv", "model", "ppdc", "cache"):
        (data / folder).mkdir()
    (data / "ppdc/font.defs").symlink_to("/usr/share/cups/ppdc/font.defs")
    (data / "ppdc/po").symlink_to(HERE / "po")
    (data / "drv/zr7700.drv").symlink_to(HERE / "zr7700.drv")
    environment = {**os.environ, "CUPS_DATADIR": str(data), "CUPS_CACHEDIR": str(data / "cache"),
                   "CUPS_SERVERBIN": str(data)}

    def run(*words):
        return subprocess.run([DRIVER_MANAGER, *words], env=environment, capture_output=True,
                              timeout=60, check=True).stdout

    return run


def models(manager, device_id):
    """Names of the PPDs for a device, as `lpinfo --device-id ... -m` asks for them."""
    answer = manager("list", "1", "0", f"ppd-device-id='{device_id}'")
    return re.findall(rb"drv:///[\w./]+?\.PPD", answer)


def test_device_that_the_backend_announces_is_found(manager):
    announced = re.search(r'\\"(MFG:[^"\\]*)\\"', BACKEND).group(1)
    for device_id in (announced, "MFG:Tessary;MDL:ZR7700;"):
        assert models(manager, device_id) == [b"drv:///zr7700.drv/ZR7700.PPD"]


@pytest.mark.parametrize("device_id", ["MFG:Tessary;MDL:ZR9900;", "MFG:Other;MDL:ZR7700;"])
def test_other_devices_are_not_taken_for_ours(manager, device_id):
    assert models(manager, device_id) == []


def test_ppd_says_what_the_backend_announces(ppd_path):
    announced = re.search(r'\\"(MFG:[^"\\]*)\\"', BACKEND).group(1)
    with open(ppd_path, encoding="utf-8") as file:
        assert f'\n*1284DeviceID: "{announced}"\n' in file.read()


def test_compiled_on_demand_it_is_the_same_ppd(manager, ppd_path):
    with open(ppd_path, "rb") as file:
        assert manager("cat", "drv:///zr7700.drv/ZR7700.PPD") == file.read()
