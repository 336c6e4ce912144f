"""The options of a job, checked against the PPD before anything is started."""

import difflib
import re

from demo_label import Refused

# Options that the distribution's filters know besides those of the PPD.
_FILTER_OPTIONS = ("page-ranges", "print-scaling", "fit-to-page", "natural-scaling", "scaling",
                   "ppi", "position", "orientation-requested", "mirror", "page-set",
                   "outputorder")


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
            elif name not in _FILTER_OPTIONS:
                _known(name, [*self.choices, *_FILTER_OPTIONS], f'There is no option "{name}"')
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
