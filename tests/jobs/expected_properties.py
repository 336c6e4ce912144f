"""What the engine is told of a page before it starts: margins, sizes, codes, alignment."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

from expected_page import i32, quotient, u32

SWATHS = "[ESwathBuilder]"


class PropertyCalls:
    """The part of the job's model that sets the properties; it works on the model's own state."""

    def _left_margin(self, resolution):
        s, good = self.settings, self.surface in (3, 4, 5)
        w = 1916
        if self.heron:
            w += s["LeftMarginOffsetHeronHighQuality" if good else "LeftMarginOffsetHeron"]
        else:
            w += s["LeftMarginOffset"] - (14 if good else 0)
        w = i32(w)
        self.log.append("     In ripGetMarginWidth")
        if w <= 0:
            self.log.append("     WARN:  ripGetMarginWidth() < 0!")
            w = 0
        if resolution == 300:
            self.log.append("     Draft Mode set Margin to 300 dpi units")
            w >>= 1
        self.log.append(f"     Margin Width {w}")
        return w

    def _property(self, entry, label, *arguments):
        """One checked property whose failure and success lines have the usual form."""
        result = self.engine.call(entry, *arguments)
        if result != 0:
            self.log.append(f"      {label} FAILED - ({result})")
            self.properties_good = False
        else:
            self.log.append(f"      {label} = ({i32(arguments[-1])})")

    def _direction(self):
        word, slot1, slot2 = ("BIDI", "0", "0") if self.bidi else ("UNI", "2", "1")
        self.log.append(f"     Setting print direction to {word}")
        for slot, value in ((1, slot1), (2, slot2)):
            if not self._set_key(SWATHS, f"Slot{slot}PrintDirection=", value):
                self.log.append(f"     Slot{slot} set print direction FAILED")

    def _properties(self, f):
        self.properties_good = True
        across, down = f["HWResolution"]
        width, height = i32(f["cupsWidth"]), i32(f["cupsHeight"])
        two_inches = i32(2 * across)
        narrow = quotient(width, i32(across)) < 2
        self.log.append("   SetHPEProperties: Printing with the following FERRO settings")
        self._direction()
        self._property("SetInputResolution", "SetHorzInputResolution", 0, across)
        self._property("SetInputResolution", "SetVertInputResolution", 1, down)
        margin = self._left_margin(across)
        if narrow:
            self.log.append(f"      Left Margin = ({margin})")
            margin = i32(margin - (two_inches - width))
            self.log.append(f"      Changing LeftMargin to ({margin}) because of printer "
                            "limitation")
        self._property("SetLeftMargin", "SetLeftMargin", margin)
        self._property("SetTopMargin", "SetTopMargin", max(self.top_offset, 0))
        self._property("SetPhysicalWidth", "SetPhysicalWidth", u32(across * 5100) // 600)
        if narrow:
            self.log += [f"      Print Width = ({width})",
                         f"      Changing Width to ({two_inches}) because of printer limitation"]
            width = two_inches
        self._property("SetPrintableWidth", "SetPrintableWidth", width)
        self._property("SetPrintableHeight", "SetPrintableHeight", height)
        self._cartridges()
        self._quality_and_media()
        return self.properties_good

    def _cartridges(self):
        for slot, kind, there, line, blanks in (
                (0, 4, 1, "      CMY Cartridge Installed", 3),
                (1, 3, 0, "      K Cartridge Not Installed", 5)):
            result = self.engine.call("SetInstalledCartridge", slot, kind, there)
            self.log.append(line)
            if result != 0:
                self.log.append(" " * blanks + f"SetInstalledCartridge FAILED - (0x{u32(result):X})")
                self.properties_good = False

    def _codes(self):
        """(quality word and code, media word and code)."""
        normal = {1: ("set to PQ_Quick", 2), 2: ("set to PQ_Normal", 2)}
        best = ("set to PQ_BEST", 4)
        if self.heron:
            quality = {**normal, 3: ("mapped to PQ_BEST", 4)}.get(self.quality, best)
            media = (("set" if self.surface == 1 else "mapped") + " to MT_PLAIN", 1)
            return quality, media
        quality = {**normal, 3: ("set to PQ_BETTER", 3)}.get(self.quality, best)
        media = {1: ("set to MT_PLAIN", 1), 3: ("set to MT_GLOSSY1", 7),
                 4: ("set to MT_GLOSSY2", 8), 5: ("set to MT_GLOSSY3", 9)}
        return quality, media.get(self.surface, ("set to MT_COATED", 2))

    def _quality_and_media(self):
        (quality_word, quality), (media_word, media) = self._codes()
        self.log += [f"     Resolution {quality_word}", f"     Media {media_word}"]
        self._property("SetMediaType", "SetMediaType", media)
        self._property("SetOutputPrintQuality", "SetOutputPrintQuality", quality)
        self._property("SetPaperTray", "SetPaperTray", 2)
        self.log.append("      Setting PageIntent to PI_Photos")
        self._last_hexadecimal("SetPageIntent", 1, None)
        sharpening = self.settings["ImageSharpeningLevel"]
        sharpening = sharpening if 1 <= sharpening < 13 else 12
        self._last_hexadecimal("SetImageSharpeningLevel", sharpening,
                               f"      SetImageSharpeningLevel = ({sharpening})")
        self._property("SetHPERasterFormat", "SetHPERasterFormat", 4)
        for item, value in ((0, 112), (1, 112), (2, 112), (3, 112), (6, self.last[102]),
                            (14, self.last[103]), (7, 40), (9, 40)):
            self.engine.call("SetAlignmentInformation", item, value)

    def _last_hexadecimal(self, entry, value, good_line):
        result = self.engine.call(entry, value)
        if result != 0:
            self.log.append(f"      {entry} FAILED - (0x{u32(result):X})")
            self.properties_good = False
        elif good_line:
            self.log.append(good_line)
