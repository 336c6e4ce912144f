"""The engine's ini file after the filter's edits."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

_PIECE = 1023
FILE_LIMIT, KEY_LINE_LIMIT, HEADER_LIMIT = 8000, 500, 100


def _pieces(text):
    """The file's lines with their ends; a long line comes in pieces."""
    out = []
    for line in _split(text):
        out += [line[i:i + _PIECE] for i in range(0, len(line), _PIECE)]
    return out


def _split(text):
    parts = text.split(b"\n")
    return [p + b"\n" for p in parts[:-1]] + ([parts[-1]] if parts[-1] else [])


def write(text, section, key, value):
    """The file after a key was set; text is None when there is no file."""
    section, key, value = section.encode(), key.encode(), value.encode()
    entry = key + value + b" \n"
    if text is None:
        return section + b"\n" + entry
    out, written, inside = b"", False, False
    for line in _pieces(text):
        if key in line:
            out += entry
            written = True
        elif not line.startswith(b"["):
            out += line
        else:
            if inside and not written:
                out += entry
                written = True
            out += line
            inside = section in line
    if not written:
        out += (b"" if inside else section) + b"\n" + entry
    return out


def remove(text, section, key):
    """The file after a key was removed from a section."""
    if text is None:
        return None
    section, key = section.encode(), key.encode()
    out, inside = b"", False
    for line in _pieces(text):
        if inside and key in line:
            continue
        out += line
        if line.startswith(b"["):
            inside = section in line
    return out
