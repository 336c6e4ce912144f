"""The packages' own test for Debian's test runs, as autopkgtest runs it."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

from packages import OUT


def test_autopkgtest(root, debs):
    root.apt("install autopkgtest dpkg-dev python3-numpy python3-pil")
    for file in [*debs, *debs[0].parent.glob("*.dsc"), *debs[0].parent.glob("*.tar.xz")]:
        root.path("tmp", file.name).write_bytes(file.read_bytes())
    answer = root.run("cd /tmp && unshare --net autopkgtest *.deb *.dsc -- null")[1]
    (OUT / "autopkgtest.log").write_text(answer)
    assert "print-label          PASS" in answer
