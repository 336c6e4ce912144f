"""The options of a job, checked against the PPD before anything is started."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import difflib
import os
import re
import sys

from demo_label import Refused

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../ppd"))

_SWITCH = ("true|false|yes|no|on|off", "true or false")
_PERCENT = (r"[1-9]\d?|[1-7]\d\d|800", "a number of per cent from 1 to 800")
# Options that scheduler and filters know besides those of the PPD, and what each takes: they pass
# over what they do not understand.
_JOB_OPTIONS = {
    "copies": (r"[1-9]|1\d|2[0-5]", "a number of discs from 1 to 25"),
    "media": (r"[A-Za-z0-9][\w.-]*", "a size's name"),
    "print-color-mode": ("auto|color|monochrome", "auto, color or monochrome"),
    "print-quality": ("[3-5]", "3 (draft), 4 (normal) or 5 (best)"),
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
    """The options of the PPD at `path`: their names and choices, and what a job's options mean."""

    def __init__(self, path):
        import cups_ppd  # needs libcups, which may only be there when this is
        self._open = lambda asked: cups_ppd.Ppd(path, text(asked))
        with self._open({}) as ppd:
            found = ppd.options()
        found.pop("PageRegion")
        self.choices = {name: choices for name, (_, _, choices) in found.items()}
        self._defaults = {name: default for name, (_, default, _) in found.items()}

    def check(self, asked):
        """Refused when an option or a choice is unknown or does not go with another one."""
        for name, value in asked.items():
            if not re.fullmatch(r"[\w,.:%/+-]*", value):
                raise Refused(f'The value "{value}" of the option {name} holds a character that '
                              "no option takes.")
            if name in self.choices:
                _known(value, self.choices[name], f'The option {name} has no choice "{value}"')
                continue
            _known(name, [*self.choices, *_JOB_OPTIONS], f'There is no option "{name}"')
            pattern, takes = _JOB_OPTIONS[name]
            if not re.fullmatch(pattern, value):
                raise Refused(f'The option {name} takes {takes}, not "{value}".')
        self._check_conflicts(asked)

    def _check_conflicts(self, asked):
        """The scheduler prints what does not go together as well, but not as anybody wants it."""
        with self._open(asked) as ppd:
            for name, choice in asked.items():
                against = ppd.conflicting(name, choice) if name in self.choices else {}
                if against:
                    raise Refused(f"{name}={choice} does not go with {text(against, ' and ')}; "
                                  "name others, or none of them and print-quality=3, 4 or 5.")

    def marked(self, asked):
        """The choice of every option for a job that asks for these, as the scheduler finds it."""
        with self._open(asked) as ppd:
            return {name: ppd.marked(name) for name in self.choices}

    def told(self, asked):
        """What the scheduler tells the filters: what is asked for, and what that means."""
        meant = {name: choice for name, choice in self.marked(asked).items()
                 if choice != self._defaults[name]}
        return meant | asked


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


def text(options, between=" "):
    return between.join(f"{name}={value}" for name, value in options.items())
