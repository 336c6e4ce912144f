"""An independent model of a whole job, from its description to everything that comes out.

The model walks a job's steps in order and writes down the log's lines (those of the main thread, and
those of the status thread page by page), standard error, standard output, the engine's calls, the
bands' bytes and the ini file. It is deterministic: what the printer says in each pass is told to it.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import expected_ini
import record as records
from expected_check import Check, conditions
from expected_engine import Engine
from expected_page import Geometry, Inks, atoi, band, i32, quotient, u32
from expected_properties import SWATHS, PropertyCalls
from expected_text import CONDITIONS, STATES_WITHDRAWN, condition_off, condition_on
from sandbox import ENGINE_DATA, LIBRARIES

SETTINGS = {"LeftMarginOffset": 0, "TopMarginOffset": 0, "TopMarginOffsetHeron": 0,
            "LeftMarginOffsetHeron": 0, "LeftMarginOffsetHeronHighQuality": 0,
            "ImageSharpeningLevel": 11, "RunComp": 1, "RunCompDiv": 3000,
            "dwStatusFrequency": 50, "FeedAdjust": -1900, "OutputDest": 1}

_MEDIA = {"HighGloss": 1, "HighGloss2": 2, "WhitePolyester": 3, "SemiGloss": 4,
          "WhiteMatteBOPP": 5}
_QUALITY = {"Quality1": 1, "Quality2": 2, "Quality3": 3}
_CONFIGURATION = "[Configuration]"


class JobEnds(Exception):
    """The job ends here, with an exit status."""

    def __init__(self, status):
        super().__init__(status)
        self.status = status


class Model(PropertyCalls):
    """settings: what the file changes. marked: PPD choices in force. flags: names of the job options
    that are on. heron comes from the first record with a known cartridge."""

    def __init__(self, pages, marked, settings=None, script=None, flags=(), ini=None,
                 checks=None, record=None, thread_record=None, end_record=None, ini_works=True):
        self.settings = dict(SETTINGS, **(settings or {}))
        self.pages, self.marked, self.flags = pages, marked, flags
        self.checks = checks or {}
        self.record = record if record is not None else records.record()
        self.thread_record = thread_record or self.record
        self.end_record = end_record or self.record
        self.ini = ini
        self.ini_works = ini_works
        self.log, self.thread, self.bands = [], [], b""
        self.stderr = ""
        self.status = None
        self.shown = set()
        self.word = 0
        self.engine = Engine(script or {}, self.settings["FeedAdjust"], self.log.append)

    def run(self):
        try:
            self._start()
            self._check(0)
            self._load()
            self._setup()
            begun = self._pages()
            self._end(begun)
        except JobEnds as end:
            self.status = end.status
        return self

    @property
    def calls(self):
        return self.engine.calls

    @property
    def stdout(self):
        return self.engine.stdout

    def _err(self, text):
        self.stderr += text

    # Start and checks.

    def _start(self):
        s = self.settings
        self.log += ["FILTER_STARTED", "Getting Settings...", "-----  Settings  --------",
                     f"   LeftMarginOffset: {s['LeftMarginOffset']}",
                     f"   LeftMarginOffsetHeron: {s['LeftMarginOffsetHeron']}",
                     f"   LeftMarginOffsetHeronHQ: {s['LeftMarginOffsetHeronHighQuality']}",
                     f"   TopMarginOffset: {s['TopMarginOffset']}",
                     f"   TopMarginOffsetHeron: {s['TopMarginOffsetHeron']}",
                     f"   ImageSharpeningLevel: {s['ImageSharpeningLevel']}",
                     f"   RunCompDiv: {s['RunCompDiv']}", f"   RunComp: {s['RunComp']}",
                     f"   StatusFrequency: {s['dwStatusFrequency']}",
                     f"   Feed Adjust: {s['FeedAdjust']}", "---------------------------"]
        self._err(STATES_WITHDRAWN)

    def _check(self, page):
        passes = self.checks.get(page, [self.record])
        check = Check(page, passes, self.log.append, self._err)
        if not check.run():
            raise JobEnds(1)
        self.limits = check.limits
        self.last = passes[-1]

    def _load(self):
        self.heron = chr(self.last[98]) in "UV"
        name = "Heron" if self.heron else "Granite"
        self.log += [f"   Successfully loaded {name} libraries",
                     "   Successfully loaded HPE functions"]
        prefix = "tqhe" if self.heron else "tqgr"
        shared = f"/{ENGINE_DATA}/"
        first = shared + "tqhe" if self.heron else f"/{LIBRARIES}/tqgr"
        self.paths = [first, first, first, shared + prefix]
        tables = (("tqhebsclr1", "tqhebsclrL", "tqhebsclrL") if self.heron
                  else ("tqgrclr1", "tqgrclrPhoto", "tqgrclrPhGlossy"))
        self.tables = [shared + table for table in tables]

    # The document.

    def _choices(self, *names):
        for name in names:
            if name in self.marked:
                self.log.append(f"   {name}Choice : {self.marked[name]}")

    def _setup(self):
        self.log.append("SETUP")
        self.engine.create()
        self.log += ["   LittleEndian", "   ### HPEInitialize"]
        result = self.engine.call("HPEInitialize", *self.paths)
        if result != 0:
            self.log.append(f"   HPEInitialize Failed 0x{u32(result):x}")
            raise JobEnds(1)
        self.log.append(f"   HPEInitialize Success {self.paths[2]} {self.paths[3]}")
        self._take_choices()
        self._write_ini()
        self._start_document()

    def _take_choices(self):
        m = self.marked
        self._choices("InnerDiameter", "Saturation", "OuterMargin")
        self.inner = u32(atoi(m.get("InnerDiameter", "0")))
        self.saturation = atoi(m.get("Saturation", "0")) & 0xFF
        self.margin = quotient(i32(atoi(m.get("OuterMargin", "0")) * 600), 254)
        self.log += ["Default Page Format CDDVD", "NORMAL MODE"]
        top = "TopMarginOffsetHeron" if self.heron else "TopMarginOffset"
        self.top_offset = i32(self.settings[top] + 69)
        self._choices("MediaType", "PrintQuality", "ColorMatching", "Bidi")
        self.surface = _MEDIA.get(m["MediaType"], 5) if "MediaType" in m else 0
        self.quality = _QUALITY.get(m["PrintQuality"], 4) if "PrintQuality" in m else 0
        self.matching = 0
        if "ColorMatching" in m:
            self.matching = 2 if m["ColorMatching"] == "BestForPhotos" else 1
        self.bidi = m.get("Bidi", "Yes") == "Yes"

    def _set_key(self, section, key, value):
        if self.ini is None:
            self.log.append("ferro ini file not present trying to create")
        if not self.ini_works:
            self.log += ["Unable to open ferro ini file for writing", "WriteFerroIniFile failed"]
            return False
        self.ini = expected_ini.write(self.ini, section, key, value)
        return True

    def _write_ini(self):
        self._set_key(_CONFIGURATION, "UseDebugSettings=", "1")
        self._set_key(_CONFIGURATION, "Printer=", "1")
        self._set_key(_CONFIGURATION, "Color=", "1" if self.matching == 1 else "2")
        key = "Slot1NumPassesOverride="
        if self.quality in (1, 4):
            self._set_key(SWATHS, key, {1: "1", 4: "8"}[self.quality])
        elif self.heron and self.quality in (2, 3):
            self._set_key(SWATHS, key, {2: "2", 3: "4"}[self.quality])
        elif self.quality == 2:
            self._remove_key(SWATHS, key)

    def _remove_key(self, section, key):
        after = expected_ini.remove(self.ini, section, key)
        if self.ini is None or (after != self.ini and not self.ini_works):
            self.log += ["Unable to open ferro ini file for writing", "WriteFerroIniFile failed"]
            return
        self.ini = after

    def _color_table(self):
        if self.matching == 1:
            return self.tables[0]
        glossy = self.quality in (3, 4) and self.surface in (3, 4, 5)
        return self.tables[2 if glossy else 1]

    def _open_document(self):
        return self.engine.call("HPEStartDoc", "CB", self._color_table(), 0, 0, 142, "CTX")

    def _start_document(self):
        self.log.append(f"   ### HPEStartDoc Called with color table {self._color_table()}")
        result = self._open_document()
        if result != 0:
            self.log.append(f"   ### HPEStartDoc Failed 0x{u32(result):x}")
            raise JobEnds(1)
        self.log += ["   ### HPEStartDoc Passed", "SETUP_END"]

    # Pages.

    def _pages(self):
        begun = 0
        for page in self.pages:
            f = page.fields
            self.log += [f"     cupsColorSpace {f['cupsColorSpace']} ",
                         f"     cupsColorOrder {f['cupsColorOrder']} ",
                         "     cupsColorOrder {} {} {} {} ".format(
                             f["MediaColor"], f["MediaClass"], f["MediaType"], f["OutputType"])]
            size = f["cupsBytesPerLine"]
            pixels = size // (f["cupsBitsPerPixel"] >> 3)
            self.log += [f"     Allocated line buffer {size} bytes at PTR!",
                         f"     Allocated rgbmline buffer {4 * pixels} bytes at PTR!"]
            if begun:
                self.log.append(f"     Checking Status on Page {begun}")
                self._check(begun)
            begun += 1
            self._err(f"     PAGE: {begun} {f['NumCopies']}")
            if not self._start_page(f):
                break
            self._start_thread()
            self._lines(page, begun, pixels)
            self.log.append(f"     Finished page {begun}...")
            self._end_page()
            if len(page.lines) < f["cupsHeight"]:
                break
        return begun

    def _start_page(self, f):
        self.log.append("START_PAGE")
        self.fields = f
        g = self.geometry = Geometry(f["cupsWidth"], f["cupsHeight"], self.margin, self.inner)
        self._dump(f, g)
        if not self._format_is_known(f):
            return False
        if not self._clip_table(g):
            return False
        self._print_header()
        self.log.append("   ### SetHPEProperties Called")
        if not self._properties(f):
            self.log.append("   ### SetHPEProperties Failed")
            return False
        self.log += ["   ### SetHPEProperties Passed", "   ### HPEStartPage Called"]
        result = self.engine.call("HPEStartPage")
        if result != 0:
            self.log.append(f"   ### HPEStartPage Failed PTR 0x{u32(result):x}")
            return False
        self.log += ["   ### HPEStartPage Passsed PTR 0x0", "START_PAGE_END"]
        return True

    def _dump(self, f, g):
        s = self.settings
        across, down = f["HWResolution"]
        size = [int(v) for v in f["cupsPageSize"]]
        self.log += [
            "-------  Job Variables  -------\n", f"   ColorMatching: {self.matching}",
            f"   DiscSurfaceQuality: {self.surface}", f"   PrintQuality: {self.quality}",
            f"   topDiscOffset: {self.top_offset}", f"   OuterMargin: {i32(g.margin)}",
            f"   InnerDiam: {i32(self.inner)}", f"   bottomOutputImage: {g.bottom}",
            f"   topOutputImage: {g.top}", f"   leftOutputImage: {i32(g.left)}",
            f"   rightOutputImage: {i32(g.right)}", f"   InkSaturation: {self.saturation}",
            f"   Page Size {g.width}, {g.height}", f"   Cups Page Size {f['cupsPageSizeName']}",
            f"   Cups Page Size {size[0]}, {size[1]}", f"   Resolution H: {across}, V: {down}",
            f"   cupsBitsPerPixel {f['cupsBitsPerPixel']}",
            f"   cupsBitsPerColor {f['cupsBitsPerColor']}",
            f"   cupsColorOrder {f['cupsColorOrder']}",
            f"   cupsBytesPerLine {f['cupsBytesPerLine']}", "   nPhotoThreshold 700",
            f"   nRunCompValue {u32(s['RunComp'])}", f"   nRunCompDiv {u32(s['RunCompDiv'])}",
            f"   ImageSharpeningValue {u32(s['ImageSharpeningLevel'])}"]

    def _format_is_known(self, f):
        for name, good in (("cupsBitsPerColor", (8, 16)), ("cupsColorOrder", (0,)),
                           ("cupsColorSpace", (0, 1))):
            if f[name] not in good:
                self.log.append(f"   Bad {name}={f[name]}!")
                return False
        if f["HWResolution"][0] == 0:
            self.log.append("   Bad HWResolution=0!")
            return False
        return True

    def _clip_table(self, g):
        self.log += [f"     ClipGetData: nID = {g.hole_radius} (in 300dpi units))\n",
                     f"     ClipGetData: wImageWidth = {g.ring_width}, "
                     f"wImageHeight = {g.ring_height}\n"]
        if not g.valid:
            self.log += [f"Invalid Dimension wOd: {g.outer}, Pline 5100",
                         "ClipGetData:  returning (FALSE)",
                         "ClipDataBufsInitialize: returning (FALSE)",
                         "ERROR:  OemClipDataBufsCreate: initialization failure!",
                         "OemClipDataBufsDelete: FREE clipDataBufs",
                         "ClipDataBufsCreate: returning (FALSE)",
                         "   Unable to create ClipDataBufs!"]
            self.table_kept = False
            return False
        if g.outer != 0:
            self.log.append(f"     ClipGetData: setting initial wIndex to {g.top}")
        self.table_kept = True
        return True

    def _print_header(self):
        low, high = self.limits
        warning = high if "SkipLowInkFWCheck" in self.flags else low - (low >> 3)
        ready = chr(self.last[26]) in "HI"
        raw = bytes([0x1B, 0x0B, 0x0E, 1, 1, 1 if ready else self.settings["OutputDest"] & 0xFF])
        raw += warning.to_bytes(4, "big") + bytes(5)
        self.log += [f"     Color Ink Warning: {warning:08x}", "     Print HEADER written"]
        self.engine.stdout += raw + bytes([sum(raw) % 256])

    def _start_thread(self):
        """A printer that says the same all the time: the conditions change at the first look."""
        raw = self.thread_record
        lines = ["Start ReadStatusThread"]
        self._take_word(raw)
        lines += self._report(conditions(raw, self.word))
        self.thread.append(lines + [f"Error check {self.word:X} ", "Exit ReadStatusThread"])

    def _take_word(self, raw):
        if chr(raw[29]) != "B":
            self.word = records.error_word(raw)

    def _report(self, now):
        """Standard-error lines for what changed; gives the log's lines."""
        lines = []
        for name in CONDITIONS:
            if name in now and name not in self.shown:
                self._err(condition_on(name))
                lines.append(f"Setting {name}")
            if name not in now and name in self.shown:
                self._err(condition_off(name))
                lines.append(f"Clearing {name}")
        self.shown = set(now)
        return lines

    def _lines(self, page, number, pixels):
        f, g, s = page.fields, self.geometry, self.settings
        inks = Inks(self.saturation, self.matching, self.surface, s["RunComp"], s["RunCompDiv"])
        height = f["cupsHeight"]
        self.log.append(f"     cupsHeight={height}")
        for y in range(height):
            if y % 128 == 0:
                self.log.append(f"     Printing page {number}, {y * 100.0 / height:.0f}% "
                                "complete...")
            if y >= len(page.lines):
                self.log.append("     BAILING on print, num bytes read 0 #")
                return
            out = band(g, inks, page.lines[y], y, f["cupsBytesPerLine"], f["cupsBitsPerPixel"])
            if out is not None:
                self._send(out, y, pixels)

    def _send(self, out, y, pixels):
        self.bands += out
        result = self.engine.call("HPESendBand", 0, y, 1, pixels, 4 * pixels)
        if result != 0:
            first = " ".join(str(v) for v in (out + bytes(9))[:9])
            self.log.append(f"Error:  HPESendBand Failed err={result} y={y} numRaster=1, "
                            f"PixelPerRaster {pixels}, BytesPerRaster {3 * pixels}, "
                            f"ScanLine PTR {first}")

    def _end_page(self):
        self.log += ["END_PAGE", "   ### HPEEndPage"]
        result = self.engine.call("HPEEndPage", 0)
        if result != 0:
            self.log.append(f"   HPEEndPage Failed 0x{u32(result):x}")
        self.log.append("END_PAGE_END")
        self.engine.call("HPEEndDoc", 0)
        self._open_document()

    # The job's end.

    def _end(self, begun):
        self.log += ["     Finished print job", "   ### HPEEndDoc"]
        result = self.engine.call("HPEEndDoc", 0)
        if result != 0:
            self.log.append(f"HPEEndDoc Failed 0x{u32(result):x}")
        if begun and getattr(self, "table_kept", False):
            self.log.append("OemClipDataBufsDelete: FREE clipDataBufs")
        self.engine.call("DestroyHostPrintEngine")
        self.log += ["     Flushing stdout", "**** Wait until printer Busy",
                     "**** Wait until printer not Busy\n",
                     "WaitForPrinterState called Looking for I"]
        state = chr(self.end_record[29])
        self.log += [f"Printer State: {state}", "Equal: 1", "WaitForPrinterState RETURNING (1)"]
        self._take_word(self.end_record)
        self.log += self._report(conditions(self.end_record, self.word))
        self.log.append(f"Printer Status = {state}. \n\n")
        self.log.append("     Ready to print." if begun else "     No pages found!")
        self.status = 0 if begun else 1
