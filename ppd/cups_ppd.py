"""The PPD as libcups reads it: a thin layer over its functions, one object per open file.

Debian's python3-cups lacks what this is for: a job's options marked as the scheduler marks them,
what conflicts with a choice and how it is resolved, and the measures of a page size.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import ctypes

_cups = ctypes.CDLL("libcups.so.2")


class _Choice(ctypes.Structure):
    pass


class _Option(ctypes.Structure):
    _fields_ = [("conflicted", ctypes.c_char), ("keyword", ctypes.c_char * 41),
                ("default", ctypes.c_char * 41), ("text", ctypes.c_char * 81),
                ("ui", ctypes.c_int), ("section", ctypes.c_int), ("order", ctypes.c_float),
                ("choice_count", ctypes.c_int), ("choices", ctypes.POINTER(_Choice))]


_Choice._fields_ = [("marked", ctypes.c_char), ("keyword", ctypes.c_char * 41),
                    ("text", ctypes.c_char * 81), ("code", ctypes.c_char_p),
                    ("option", ctypes.POINTER(_Option))]


class _Size(ctypes.Structure):
    _fields_ = [("marked", ctypes.c_int), ("name", ctypes.c_char * 41),
                *((edge, ctypes.c_float)
                  for edge in ("width", "length", "left", "bottom", "right", "top"))]


class _Setting(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("value", ctypes.c_char_p)]


_Settings = ctypes.POINTER(_Setting)

for _name, _result, _arguments in (
        ("ppdOpenFile", ctypes.c_void_p, [ctypes.c_char_p]),
        ("ppdClose", None, [ctypes.c_void_p]),
        ("ppdMarkDefaults", None, [ctypes.c_void_p]),
        ("ppdLocalize", ctypes.c_int, [ctypes.c_void_p]),
        ("ppdConflicts", ctypes.c_int, [ctypes.c_void_p]),
        ("ppdFirstOption", ctypes.POINTER(_Option), [ctypes.c_void_p]),
        ("ppdNextOption", ctypes.POINTER(_Option), [ctypes.c_void_p]),
        ("ppdFindMarkedChoice", ctypes.POINTER(_Choice), [ctypes.c_void_p, ctypes.c_char_p]),
        ("ppdPageSize", ctypes.POINTER(_Size), [ctypes.c_void_p, ctypes.c_char_p]),
        ("ppdLocalizeIPPReason", ctypes.c_char_p,
         [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_size_t]),
        ("cupsParseOptions", ctypes.c_int,
         [ctypes.c_char_p, ctypes.c_int, ctypes.POINTER(_Settings)]),
        ("cupsMarkOptions", ctypes.c_int, [ctypes.c_void_p, ctypes.c_int, _Settings]),
        ("cupsGetConflicts", ctypes.c_int,
         [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.POINTER(_Settings)]),
        ("cupsResolveConflicts", ctypes.c_int,
         [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.POINTER(ctypes.c_int),
          ctypes.POINTER(_Settings)])):
    _function = getattr(_cups, _name)
    _function.restype, _function.argtypes = _result, _arguments


class Ppd:
    """An open PPD with its defaults marked and, over them, the options of a job."""

    def __init__(self, path, job_options=""):
        self._file = _cups.ppdOpenFile(path.encode())
        if not self._file:
            raise ValueError(f"libcups cannot open {path}")
        _cups.ppdMarkDefaults(self._file)
        settings = _Settings()
        count = _cups.cupsParseOptions(job_options.encode(), 0, settings)
        _cups.cupsMarkOptions(self._file, count, settings)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        _cups.ppdClose(self._file)

    def options(self):
        """{option keyword: (text, default keyword, {choice keyword: text})}, in their order."""
        found = {}
        option = _cups.ppdFirstOption(self._file)
        while option:
            entry = option.contents
            choices = {entry.choices[i].keyword.decode(): entry.choices[i].text.decode()
                       for i in range(entry.choice_count)}
            found[entry.keyword.decode()] = (entry.text.decode(), entry.default.decode(), choices)
            option = _cups.ppdNextOption(self._file)
        return found

    def marked(self, option):
        """The marked keyword of an option, or None."""
        choice = _cups.ppdFindMarkedChoice(self._file, option.encode())
        return choice.contents.keyword.decode() if choice else None

    def conflicts(self):
        """How many constraints the marked choices break."""
        return _cups.ppdConflicts(self._file)

    def conflicting(self, option, choice):
        """The marked choices that a choice cannot be had together with: {option: choice}."""
        settings = _Settings()
        count = _cups.cupsGetConflicts(self._file, option.encode(), choice.encode(), settings)
        found = {settings[i].name.decode(): settings[i].value.decode() for i in range(count)}
        found.pop(option, None)
        return found

    def resolved(self, option, choice):
        """What a dialogue would set besides when somebody takes this choice, or None."""
        count, settings = ctypes.c_int(0), _Settings()
        if not _cups.cupsResolveConflicts(self._file, option.encode(), choice.encode(), count,
                                          settings):
            return None
        return {settings[i].name.decode(): settings[i].value.decode() for i in range(count.value)}

    def page(self, name):
        """(width, length, left, bottom, right, top) of a page size in points."""
        size = _cups.ppdPageSize(self._file, name.encode()).contents
        return (size.width, size.length, size.left, size.bottom, size.right, size.top)

    def localize(self):
        """Turns the texts of options() into those of the process's language."""
        if _cups.ppdLocalize(self._file) != 0:
            raise ValueError("libcups cannot localise the PPD")

    def reason(self, keyword):
        """The text of a printer-state reason in the process's language, or None."""
        text = ctypes.create_string_buffer(256)
        found = _cups.ppdLocalizeIPPReason(self._file, keyword.encode(), None, text, len(text))
        return text.value.decode() if found else None
