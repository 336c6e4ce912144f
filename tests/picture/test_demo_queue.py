"""./demo prints as a queue does: the same filters, told the same, for every kind of document."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re

from PIL import Image

import demo_options
import demo_queue
import documents
from disc_job import BUILD, PPD
from scheduler import Scheduler


def kinds_of_documents(folder):
    """One of each kind that a queue takes in a way of its own."""
    made = {kind: folder / f"label.{kind}" for kind in
            ("png", "jpg", "gif", "pdf", "ps", "txt", "urf", "pwg")}
    for kind in ("png", "jpg", "gif"):
        documents.picture(made[kind], (600, 600))
    documents.pdf(made["pdf"], [(340, 340)])
    documents.postscript(made["ps"], (340, 340))
    documents.urf(made["urf"], (300, 300), 300)
    documents.pwg(made["pwg"], (300, 300), 300)
    made["txt"].write_text("A disc of words.\n")
    return made


def started_filters(log):
    return re.findall(r"Started filter \S*/filter/(\S+)", log)


def test_the_filters_are_those_of_a_queue(tmp_path):
    """For every kind of document, and they are told the same of the PPD's options."""
    tmp_path.chmod(0o755)
    queue = demo_queue.Queue(str(tmp_path / "queue"), str(BUILD), str(PPD))
    options = demo_options.PpdOptions(str(PPD))
    asked = {"print-quality": "3", "media": "80x80mm.Fullbleed", "print-color-mode": "monochrome"}
    scheduler = Scheduler()
    try:
        scheduler.machine()
        for kind, document in kinds_of_documents(tmp_path).items():
            document.chmod(0o644)
            words = [f"-o{name}={value}" for name, value in asked.items()]
            job = scheduler.print(*words, "-n", "2", document)
            scheduler.wait_for_state(job, "completed", 120)
            log = scheduler.job_log(job)
            assert queue.filters(document) == started_filters(log), kind
            assert re.search(r'envp\[\d+\]="CONTENT_TYPE=(\S+)"', log)[1] == queue.kind(document)
            told = queue.environment(document, "/tmp")
            assert f'FINAL_CONTENT_TYPE={told["FINAL_CONTENT_TYPE"]}"' in log
            words = re.search(r'argv\[5\]="(.*)"', log)[1]
            heard = dict(word.split("=", 1) for word in words.split() if "=" in word)
            assert {name: heard.get(name) for name in options.told(asked)} == options.told(asked)
            assert 'argv[4]="2"' in log
    finally:
        scheduler.stop()


def test_every_kind_of_document_becomes_a_disc(box, tmp_path):
    folder = tmp_path / "labels"
    folder.mkdir()
    done = box.demo(*kinds_of_documents(folder).values(), "-o", "print-quality=3")
    assert done.returncode == 0, done.stderr
    assert done.stdout.count("pages    1, 300 dpi, Quality1, engine family Granite, 1 pass\n") == 8
    assert len(os.listdir(box.build / "discs")) == 16


def test_copies_pages_media_and_greys(box, tmp_path):
    """Two of five pages, thrice, on small discs, without colour."""
    documents.pdf(tmp_path / "five.pdf", [(226.8, 226.8)] * 5)
    done = box.demo(tmp_path / "five.pdf", "-o", "page-ranges=2,4 media=80x80mm.Fullbleed copies=3",
                    "-o", "ColorModel=Gray print-quality=3")
    assert done.returncode == 0, done.stderr
    assert re.findall(r"disc (\d) of (\d), 100 %", done.stdout) == [
        (str(number), "6") for number in range(1, 7)]
    assert "pages    6, 300 dpi" in done.stdout
    with Image.open(box.build / "discs/five-001.png") as disc:
        assert disc.width == 945  # 80 mm at 300 dpi
        reds, greens, blues = (disc.convert("RGB").resize((9, 9), Image.BOX).getchannel(i).tobytes()
                               for i in range(3))
    assert max(abs(r - g) + abs(g - b) for r, g, b in zip(reds, greens, blues)) < 24
    assert min(reds) < 200
