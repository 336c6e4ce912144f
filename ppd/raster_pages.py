"""Labels on their way through the distribution's filters: from PDF to raster."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import subprocess


def pdf_file(objects):
    """A PDF of these objects, numbered from 1; the first is the catalogue."""
    text, places = "%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        places.append(len(text))
        text += f"{number} 0 obj{body}endobj\n"
    start = len(text)
    text += f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n"
    text += "".join(f"{place:010} 00000 n \n" for place in places)
    text += f"trailer<</Size {len(objects) + 1}/Root 1 0 R>>\nstartxref\n{start}\n%%EOF\n"
    return text.encode()


def pdf(side_points, drawing):
    """A PDF of one square page with the drawing (PDF operators)."""
    return pdf_file(["<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                     f"<</Type/Page/Parent 2 0 R/MediaBox[0 0 {side_points} {side_points}]"
                     "/Resources<<>>/Contents 4 0 R>>",
                     f"<</Length {len(drawing)}>>stream\n{drawing}\nendstream"])


def filtered(ppd_path, document, rasterizer, options, copies, folder):
    """The raster file that pdftopdf and a rasterizer make of a PDF."""
    environment = {**os.environ, "PPD": ppd_path, "TMPDIR": str(folder)}
    data = document
    for name in ("pdftopdf", rasterizer):
        done = subprocess.run(["/usr/lib/cups/filter/" + name, "1", "user", "title", str(copies),
                               options], input=data, capture_output=True, env=environment,
                              check=True, timeout=120)
        data = done.stdout
    path = folder / "label.raster"
    path.write_bytes(data)
    return path


def filtered_picture(ppd_path, picture, options, folder):
    """The raster file that imagetoraster makes of a picture file."""
    done = subprocess.run(["/usr/lib/cups/filter/imagetoraster", "1", "user", "title", "1", options,
                           str(picture)], capture_output=True, check=True, timeout=120,
                          env={**os.environ, "PPD": ppd_path, "TMPDIR": str(folder)})
    path = folder / "picture.raster"
    path.write_bytes(done.stdout)
    return path
