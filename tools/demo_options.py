"""The options of a job, checked against the PPD before anything is started."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import difflib
import re

from demo_label import Refused

_SWITCH = ("true|false|yes|no|on|off", "true or false")
_PERCENT = (r"[1-9]\d?|[1-7]\d\d|800", "a number of per cent from 1 to 800")
# Options that the distribution's filters know besides those of the PPD, and what each takes: they
# pass over what they do not understand.
_FILTER_OPTIONS = {
    "page-ranges": (r"[1-9]\d*(-([1-9]\d*)?)?(,[1-9]\d*(-([1-9]\d*)?)?)*", "pages such as 1-3,5"),
    "print-scaling": ("auto|auto-fit|fill|fit|none", "auto, auto-fit, fill, fit or none"),
    "fit-to-page": _SWITCH,
    "natural-scaling": _PERCENT,
    "scaling": _PERCENT,
    "ppi": (r"[1-9]\d{1,3}", "a number of dots per inch from 10 to 9999"),
    "position": ("center|(top|bottom)(-(left|right))?|left|right",
                 "center, top, bottom, left, right, or two of them such as top-left"),
    "orientation-requested": ("[3-6]", "3, 4 (turned left), 5 (turned right) or 6 (upside down)"),
    "mirror": _SWITCH,
    "page-set": ("all|even|odd", "all, even or odd"),
    "outputorder": ("normal|reverse", "normal or reverse"),
}


class PpdOptions:
    """The options of a PPD: name to choices (keyword to text), defaults and constraints."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            text = file.read()
        self.choices = {name: {} for name in re.findall(r"^\*OpenUI \*(\w+)", text, re.M)}
        self.choices.pop("PageRegion", None)
        for name, keyword, label in re.findall(r"^\*(\w+) ([\w.-]+)(?:/([^:\n]*))?:", text, re.M):
            if name in self.choices:
                self.choices[name][keyword] = label
        self.defaults = {name: choice for name, choice in
                         re.findall(r"^\*Default(\w+): *(\S+)", text, re.M) if name in self.choices}
        pairs = re.findall(r'^\*UIConstraints: "?\*(\w+) (\S+) \*(\w+) ([^"\s]+)"?', text, re.M)
        self.conflicts = {((a, x), (b, y)) for a, x, b, y in pairs}
        self.conflicts |= {(second, first) for first, second in self.conflicts}

    def check(self, asked):
        """Refused when an option or a choice is unknown or two of them exclude each other."""
        for name, value in asked.items():
            if not re.fullmatch(r"[\w,.:%/+-]*", value):
                raise Refused(f'The value "{value}" of the option {name} holds a character that '
                              "no option takes.")
            if name in self.choices:
                _known(value, self.choices[name], f'The option {name} has no choice "{value}"')
                continue
            _known(name, [*self.choices, *_FILTER_OPTIONS], f'There is no option "{name}"')
            pattern, takes = _FILTER_OPTIONS[name]
            if not re.fullmatch(pattern, value):
                raise Refused(f'The option {name} takes {takes}, not "{value}".')
        for first in asked.items():
            for second in asked.items():
                if (first, second) in self.conflicts:
                    raise Refused(f"{first[0]}={first[1]} and {second[0]}={second[1]} exclude "
                                  "each other; leave one of them out.")

    def settle(self, asked):
        """`asked` and, where a default cannot be had together with it, a choice that can: the one
        whose text begins like the default's, if there is one."""
        settled = dict(asked)
        for name, default in self.defaults.items():
            if name in asked or self._fits(name, default, settled):
                continue
            fitting = [c for c in self.choices[name] if self._fits(name, c, settled)]
            alike = [c for c in fitting
                     if self.choices[name][c].startswith(self.choices[name][default])]
            settled[name] = (alike or fitting or [default])[0]
        return settled

    def _fits(self, name, choice, others):
        return not any(((name, choice), other) in self.conflicts for other in others.items())


def _known(word, words, complaint):
    """Few words are all told, of many only the nearest."""
    if word in words:
        return
    near = difflib.get_close_matches(word, words, 1) if len(words) > 12 else []
    advice = f"did you mean {near[0]}?" if near else "it can be " + ", ".join(words) + "."
    raise Refused(f"{complaint}; {advice}")


def parse(texts):
    """The options of several "name=value name=value" texts, later ones winning."""
    asked = {}
    for text in texts:
        for word in text.split():
            name, equals, value = word.partition("=")
            if not re.fullmatch(r"[\w-]+", name):
                raise Refused(f'"{word}" is no option; options read NAME=VALUE.')
            asked[name] = value if equals else "true"
    return asked


def text(options):
    return " ".join(f"{name}={value}" for name, value in options.items())
