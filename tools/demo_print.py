#!/usr/bin/env python3
"""Prints labels on the virtual printer and tells where the pictures of the discs are.

./demo runs this once everything is built. Standard library only.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import demo_stop

if __name__ == "__main__":
    demo_stop.prepare()  # before the other imports, which take long enough to be interrupted

import argparse
import errno
import fcntl
import itertools
import json
import os
import re
import shutil
import sys
import tempfile
import time

import demo_label
import demo_options
import demo_show
from demo_chain import SCARCE_BYTES, Chain, keep_channels_free
from demo_label import Refused
from demo_queue import TOP, Queue

EXAMPLES = ("labels/concert.pdf", "labels/lake.png")
ROOM_MIB = 60  # what a job with a label of usual size writes
MOST_DISCS = 25
REFILLS = 1000  # discs after which nobody stands at the printer any more
USAGE = """./demo [LABEL ...] [-o NAME=VALUE]... [--cartridge LETTER] [--discs NUMBER] [--no-show]

Prints labels on the virtual disc printer, through the filters that a print queue would choose for
them, and shows the picture of the disc. A label is whatever the queue takes: a PDF, a picture (PNG,
JPEG, TIFF, GIF, BMP), PostScript, a text. Without one it prints both examples of labels/.

  -o NAME=VALUE       an option as lp takes it, such as print-quality=5, print-scaling=fill,
                      media=80x80mm.Fullbleed or InnerDiameter=460; several -o are fine (a wrong
                      one names the right ones)
  --cartridge LETTER  Q or P: the engine family Granite; U or V: Heron (Q)
  --discs NUMBER      copies of each label, 1 to 25 (1); -o copies=NUMBER is the same
  --no-show           only say where the picture is
  --help              say this
  --version           say the version
"""


class Parser(argparse.ArgumentParser):
    def error(self, message):
        raise Refused(f"{message[:1].upper()}{message[1:]}; ./demo --help tells what there is.")


def read_arguments(words):
    parser = Parser(prog="demo", usage=USAGE, add_help=False, allow_abbrev=False)
    parser.add_argument("labels", nargs="*")
    parser.add_argument("-o", dest="options", action="append", default=[])
    parser.add_argument("--cartridge", default="Q")
    parser.add_argument("--discs")
    parser.add_argument("--no-show", dest="show", action="store_false")
    parser.add_argument("--build")
    parser.add_argument("--check-arguments", action="store_true")
    parser.add_argument("-h", "--help", action="store_true")
    # What follows "--" is no option.
    end = words.index("--") if "--" in words else len(words)
    arguments = parser.parse_intermixed_args(words[:end])
    arguments.labels += words[end + 1:]
    if arguments.cartridge not in ("Q", "P", "U", "V"):
        raise Refused(f'There is no cartridge "{arguments.cartridge}"; it can be Q, P, U or V.')
    arguments.options = demo_options.parse(arguments.options)
    discs = arguments.discs or arguments.options.pop("copies", "1")
    if not re.fullmatch("[0-9]{1,9}", discs) or not 1 <= int(discs) <= MOST_DISCS:
        raise Refused(f'The number of discs can be 1 to {MOST_DISCS}, not "{discs}".')
    arguments.discs = int(discs)
    if not arguments.labels:
        arguments.labels = [os.path.join(TOP, example) for example in EXAMPLES]
    return arguments


def need_room(folder):
    free = shutil.disk_usage(folder).free >> 20
    if free < ROOM_MIB:
        raise Refused(f"There is no room on the disk: {ROOM_MIB} MiB are needed at {folder}, "
                      f"{free} MiB are free; delete something and try again.")


class Progress:
    """One line that grows (or, on a terminal, is written over) while a label is printed. `discs`
    is how many there will be, 0 when nobody knows."""

    def __init__(self, name, discs):
        self._name, self._discs = name, discs
        self._terminal = sys.stdout.isatty()
        self._shown = None
        if not self._terminal:
            print(f"Printing {name}:", end="", flush=True)

    def __call__(self, page, percent):
        step = (page, percent if self._terminal else percent // 25 * 25)
        if step == self._shown:
            return
        self._shown = step
        several = page > 1 if self._discs == 0 else self._discs > 1
        disc = f" disc {page}{f' of {self._discs}' if self._discs else ''}," if several else ""
        if self._terminal:
            filled = "#" * (percent // 4)
            print(f"\rPrinting {self._name}:{disc} [{filled:<25}] {percent:3d} %", end="",
                  flush=True)
        elif step[1] > 0:
            print(f"{disc} {step[1]} %", end="", flush=True)

    def end(self):
        print(flush=True)


class Demo:
    def __init__(self, arguments):
        self.arguments = arguments
        self.build = os.path.abspath(arguments.build)
        self.ppd = os.path.join(self.build, "ppd/zr7700.ppd")
        self.root = os.path.join(self.build, "root")
        self.discs = os.path.join(self.build, "discs")
        self.log = os.path.join(self.root, "Library/Caches/ZR7700Filter.log")
        options = demo_options.PpdOptions(self.ppd)
        options.check(arguments.options)
        self.options = demo_options.text(options.told(arguments.options))
        self.quality = options.marked(arguments.options)["PrintQuality"]
        for folder in (self.discs, os.path.dirname(self.log),
                       os.path.join(self.root, "var/tmp/tessary")):
            os.makedirs(folder, exist_ok=True)

    def lock(self):
        """The log, the shared memory and the ini files are one job's at a time. Whoever holds the
        lock also removes what a killed job left."""
        self._lock = open(os.path.join(self.build, "demo.lock"), "w", encoding="ascii")
        try:
            fcntl.flock(self._lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            raise Refused("Another ./demo is printing; wait until it is done.") from None
        for name in os.listdir(self.build):
            if name.startswith("job-"):
                shutil.rmtree(os.path.join(self.build, name), ignore_errors=True)

    def print_all(self, paths):
        with tempfile.TemporaryDirectory(prefix="job-", dir=self.build) as folder:
            queue = Queue(os.path.join(folder, "queue"), self.build, self.ppd)
            labels = [Label(path, queue, self.arguments) for path in paths]
            for label, name in zip(labels, names_of(paths)):
                self.print_label(label, queue, name, os.path.join(folder, name))

    def print_label(self, label, queue, name, folder):
        need_room(self.discs)
        started = time.monotonic()
        os.mkdir(folder)
        report, messages = self._run(folder, label, queue, name)
        self._keep_pictures(folder, report, name)
        tell_report(report, messages, self.quality, time.monotonic() - started)
        if self.arguments.show:
            demo_show.show(report["discs"][0]["small_picture"])

    def _run(self, folder, label, queue, name):
        if os.path.exists(self.log):
            os.remove(self.log)
        report = os.path.join(folder, "report.json")
        printer = [os.path.join(self.build, "zr7700-printer"), "--out", folder, "--name", name,
                   "--report", report, "--cartridge", self.arguments.cartridge,
                   "--script", self._write_script(folder)]
        chain = Chain(label.path, queue.commands(label.path, self.arguments.discs, self.options),
                      queue.environment(label.path, folder), printer, folder, self.log)
        progress = Progress(os.path.basename(label.path), label.discs)
        try:
            chain.start()
            chain.run(progress)
        except Refused:
            if shutil.disk_usage(folder).free < SCARCE_BYTES:
                raise OSError(errno.ENOSPC, "") from None
            raise
        finally:
            chain.stop()
            progress.end()
        return self._read_report(report, chain), chain.errors("rastertoZR7700")

    def _write_script(self, folder):
        """Nobody stands at this printer: it gets discs and ink before it runs out of them."""
        path = os.path.join(folder, "printer.script")
        with open(path, "w", encoding="ascii") as file:
            for page in range(1, REFILLS + 1):
                file.write(f"after page {page} bin 25\nafter page {page} ink full\n")
        return path

    def _read_report(self, path, chain):
        try:
            with open(path, encoding="utf-8") as file:
                report = json.load(file)
        except (OSError, ValueError):
            report = {"errors": [chain.errors("zr7700-printer").strip()], "discs": []}
        if any(os.strerror(errno.ENOSPC) in error for error in report["errors"]):
            raise OSError(errno.ENOSPC, "")
        wrong = report["errors"] + [violation["text"] for violation in report.get("violations", [])]
        if wrong or not report["discs"]:
            raise Refused("The printer could not make a disc of what it got "
                          f"({(wrong or ['nothing came'])[0]}); look into {self.log}.")
        return report

    def _keep_pictures(self, folder, report, name):
        """Pictures appear among the discs whole and all at once, in the place of older ones."""
        for old in os.listdir(self.discs):
            if re.fullmatch(re.escape(name) + r"-\d+(-small)?\.png", old):
                os.remove(os.path.join(self.discs, old))
        for disc in report["discs"]:
            for kind in ("picture", "small_picture"):
                kept = os.path.join(self.discs, os.path.basename(disc[kind]))
                os.rename(os.path.join(folder, os.path.basename(disc[kind])), kept)
                disc[kind] = kept


def ink_text(discs):
    inks = ("cyan", "magenta", "yellow")
    used = {ink: sum(disc["ink_picolitres"][ink] for disc in discs) / 1e6 for ink in inks}
    parts = ", ".join(f"{ink} {used[ink]:.1f}" for ink in inks)
    return f"{sum(used.values()):.1f} microlitres ({parts})"


def status_lines(messages):
    """The filter's words to the print system, each once, with how often it was said."""
    found = {}
    for line in re.findall(r"(?:STATE|ERROR): .*", messages):
        found[line] = found.get(line, 0) + 1
    return [line if count == 1 else f"{line}  ({count} times)" for line, count in found.items()]


def tell_report(report, messages, quality, seconds):
    discs = report["discs"]
    for disc in discs:
        print(f"  disc     {disc['small_picture']}\n           {disc['picture']} (every dot)")
    drops = sum(count for disc in discs for sizes in disc["drops"].values()
                for count in sizes.values())
    first = discs[0]
    passes = first["passes"]
    print(f"  pages    {report['pages']}, {first['resolution_dpi']} dpi, {quality}, "
          f"engine family {first['family']}, {passes} pass{'es' * (passes > 1)}")
    print(f"  dots     {drops:,} drops in {report['stream_bytes']:,} bytes")
    print(f"  ink      {ink_text(discs)}")
    lines = status_lines(messages)
    print(f"  status   {report['records_sent']} records from the printer; the filter reported:")
    for line in lines or ["nothing"]:
        print(f"           {line}")
    print(f"  time     {seconds:.1f} s")


class Label:
    """A label file and how many discs it gives, 0 when only printing it tells."""

    def __init__(self, path, queue, arguments):
        self.path = path
        kind = queue.kind(path)
        if queue.filters(path)[0] == "pdftodisc":
            pages = demo_label.pages_of_pdf(path)
            self.discs = demo_label.pages_chosen(pages, arguments.options) * arguments.discs
        else:
            self.discs = arguments.discs if kind in ("image/png", "image/jpeg") else 0


def names_of(paths):
    """For each label what its pictures' names begin with; labels of the same name are numbered."""
    names = []
    for path in paths:
        stem = os.path.splitext(os.path.basename(path))[0]
        name = re.sub(r"[^\w.-]", "_", stem).lstrip(".") or "label"
        tries = (f"{name}_{n}" if n > 1 else name for n in itertools.count(1))
        names.append(next(name for name in tries if name not in ("queue", *names)))
    return names


def print_all(arguments):
    for path in arguments.labels:
        demo_label.check_file(path)
    if arguments.check_arguments:
        return
    demo = Demo(arguments)
    demo.lock()
    demo.print_all(arguments.labels)


def main():
    keep_channels_free()
    try:
        arguments = read_arguments(sys.argv[1:])
        if arguments.help:
            print("Usage: " + USAGE, end="")
            return 0
        print_all(arguments)
        return 0
    except Refused as refusal:
        print(f"demo: {refusal}", file=sys.stderr)
    except BrokenPipeError:
        # Whoever read what we say has gone; Python would complain once more at its end.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
    except OSError as error:
        if error.errno == errno.ENOSPC:
            said = "There is no room on the disk for the picture; delete something and try again."
        else:
            said = (f"{error.filename or 'A file'} cannot be used ({error.strerror}); look whose it"
                    " is, or remove the folder build-demo, and try again.")
        print(f"demo: {said}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
