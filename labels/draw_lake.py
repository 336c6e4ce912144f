#!/usr/bin/env python3
"""Draws lake.png: a mountain lake in the first light, as a camera might have seen it.

Nothing is photographed: a terrain of ridged noise is looked at through a pinhole camera, lit by a
low sun with shadows, veiled by the air in front of it and mirrored in the water. Needs numpy and
PIL.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os

import numpy as np
from PIL import Image, ImageDraw, ImageFilter, ImageFont

SIDE = 1417  # dots: 120 mm at 300 dpi
FINE = 2 * SIDE  # drawn at twice the resolution
HORIZON = 0.575  # of the picture's height
FOCAL = 1.05  # focal length in picture widths
EYE_M = 14.0  # of the camera above the water
SUN = np.array([-0.76, 0.44, -0.48])  # towards the sun: x right, y up, z away from the camera
MAP_M = 9000.0  # side of the terrain
MAP_CELLS = 1536
FONT = "/usr/share/fonts/opentype/urw-base35/URWGothic-Book.otf"

random = np.random.default_rng(20)


def noise(shape, wave, wrap=False):
    """Smooth noise from 0 to 1 whose hills are `wave` cells wide."""
    rows, columns = (int(np.ceil(n / wave)) + 4 for n in shape)
    grid = random.random((rows, columns))
    shift = random.random(2)
    y = np.arange(shape[0]) / wave + shift[0]
    x = np.arange(shape[1]) / wave + shift[1]
    yi, xi = y.astype(int), x.astype(int)
    yf, xf = (y - yi)[:, None], (x - xi)[None, :]
    yf, xf = (t * t * t * (t * (6 * t - 15) + 10) for t in (yf, xf))
    corner = lambda dy, dx: grid[np.ix_(yi + dy, xi + dx)]
    top = corner(0, 0) * (1 - xf) + corner(0, 1) * xf
    bottom = corner(1, 0) * (1 - xf) + corner(1, 1) * xf
    return top * (1 - yf) + bottom * yf


def fractal(shape, wave, octaves, gain=0.5, ridged=False):
    total, weight, amplitude, carried = 0, 0, 1.0, 1.0
    for _ in range(octaves):
        layer = noise(shape, wave)
        if ridged:
            layer = (1 - np.abs(2 * layer - 1)) ** 2 * carried
            carried = np.clip(layer * 1.8, 0, 1)
        total = total + amplitude * layer
        weight += amplitude
        amplitude, wave = amplitude * gain, max(wave / 2, 1.5)
    return total / weight


def terrain():
    """Heights in metres: row 0 is near, the last row far."""
    shape = (MAP_CELLS, MAP_CELLS)
    away = np.linspace(0, 1, MAP_CELLS)[:, None]
    across = np.linspace(-1, 1, MAP_CELLS)[None, :]
    warp = fractal(shape, 200, 3) - 0.5
    ridges = fractal(shape, 330, 10, 0.53, ridged=True)
    ridges = sample(
        ridges,
        np.arange(MAP_CELLS)[:, None] + 90 * warp,
        np.arange(MAP_CELLS)[None, :] + 90 * warp.T,
    )
    hills = fractal(shape, 240, 8, 0.52)
    peaks = 2250 * ridges * (0.30 + 0.70 * np.clip((away - 0.3) / 0.45, 0, 1)) + 520 * hills
    # A lake in front, open towards the camera, with the valley running away from it.
    shore = 0.245 + 0.05 * np.sin(across * 5 + 1.0) + 0.05 * (hills - 0.5)
    valley = np.clip(np.abs(across + 0.10 - 0.22 * away) / (0.42 - 0.1 * away), 0, 1) ** 1.6
    rise = np.clip((away - shore) / 0.35, -1, 1)
    land = peaks * (0.22 + 0.78 * valley) * np.clip(rise, 0, 1) ** 0.9
    side = np.clip(np.abs(across) * 1.2 - 0.42 - 0.5 * away, 0, 1) * 900
    return land - 30 + np.where(rise > 0, 34, 0) * np.clip(rise * 8, 0, 1) + side * hills


def shadows(heights, cell_m):
    """How much sun reaches each cell: 1 all, 0 none; soft at the edges."""
    light = np.ones_like(heights)
    run = np.hypot(SUN[0], SUN[2])
    for step in np.geomspace(2, 700, 110):
        dx, dz = SUN[0] / run * step, SUN[2] / run * step
        lifted = np.roll(heights, (-int(round(dz)), -int(round(dx))), (0, 1))
        ray = heights + SUN[1] / run * step * cell_m
        light = np.minimum(light, np.clip(0.5 + (ray - lifted) / (0.05 * step * cell_m), 0, 1))
    return light


def sample(field, z, x):
    """Bilinear values of a map at fractional cells."""
    z = np.clip(z, 0, field.shape[0] - 1.001)
    x = np.clip(x, 0, field.shape[1] - 1.001)
    zi, xi = z.astype(int), x.astype(int)
    zf, xf = z - zi, x - xi
    return (
        field[zi, xi] * (1 - zf) * (1 - xf)
        + field[zi, xi + 1] * (1 - zf) * xf
        + field[zi + 1, xi] * zf * (1 - xf)
        + field[zi + 1, xi + 1] * zf * xf
    )


def ground_color(heights, cell_m):
    """Linear-light colours of the terrain in the sun, a map per channel."""
    dz, dx = np.gradient(heights, cell_m)
    up = 1 / np.sqrt(1 + dx * dx + dz * dz)
    lit = np.clip((-dx * SUN[0] + SUN[1] - dz * SUN[2]) * up, 0, 1) * shadows(heights, cell_m)
    patchy = fractal(heights.shape, 60, 6)
    fine = fractal(heights.shape, 9, 3)
    steep = np.clip((1 - up) * 2.1 + (fine - 0.5) * 0.5, 0, 1)
    snow = np.clip((heights - 520 + 420 * (patchy - 0.5)) / 240, 0, 1) * np.clip(
        2.5 - 2.6 * steep, 0, 1
    )
    wood = np.clip((330 - heights + 420 * (patchy - 0.5)) / 120, 0, 1) * np.clip(
        2.6 - 2.4 * steep, 0, 1
    )
    maps = []
    for rock, tree, white, sun, sky in (
        (0.170, 0.034, 0.80, 2.30, 0.17),
        (0.142, 0.052, 0.82, 1.52, 0.24),
        (0.128, 0.026, 0.86, 0.92, 0.40),
    ):
        color = rock * (0.55 + 0.9 * fine)
        color = color + (tree * (0.4 + 1.2 * fine) - color) * wood
        color = color + (white * (0.86 + 0.2 * fine) - color) * snow
        maps.append(color * (sun * lit + sky * (0.35 + 0.65 * up)))
    return maps


def sky():
    """Linear-light sky, clouds lit from below the left, for the whole picture."""
    small = (FINE // 2, FINE // 2)
    up = np.clip(HORIZON - np.linspace(0, 1, small[0]), 0, 1)[:, None] / HORIZON
    side = np.linspace(0, 1, small[1])[None, :]
    warm = np.exp(-((side - 0.08) ** 2) / 0.28 - (up / 0.42) ** 1.4)
    out = []
    stretched = np.clip(up, 0.02, 1)
    # Clouds lie in a plane above: the noise is looked up in perspective.
    plane = fractal((900, 1800), 120, 8, 0.56)
    rows = np.clip(300 / (stretched + 0.42), 0, 880)
    columns = 900 + (side - 0.5) * 620 / (stretched + 0.42) + 60 * stretched
    cloud = sample(plane, np.broadcast_to(rows, small), columns)
    cover = np.clip((cloud - 0.49) * 3.6, 0, 1) ** 1.5
    for low, high, glow, lit in (
        (0.62, 0.085, 1.05, 1.22),
        (0.60, 0.20, 0.58, 0.88),
        (0.66, 0.46, 0.20, 0.62),
    ):
        clear = high + (low - high) * (1 - up) ** 2.4 + glow * warm
        bright = lit * (0.72 + 0.6 * warm) * (1.12 - 0.16 * cover)
        out.append(clear + (bright - clear) * cover * (0.35 + 0.65 * np.clip(1 - up * 0.25, 0, 1)))
    return [
        np.array(Image.fromarray(c.astype("f4")).resize((FINE, FINE), Image.BICUBIC)) for c in out
    ]


def look(heights, maps, cell_m):
    """The picture above the horizon: for every column the nearest ground that each line meets."""
    picture = sky()
    distance = np.geomspace(120, MAP_M * 0.985, 1500)
    columns = (np.arange(FINE) + 0.5) / FINE - 0.5
    x = MAP_CELLS / 2 + np.outer(columns / FOCAL, distance) / cell_m  # a row a column
    z = np.broadcast_to(distance / cell_m, x.shape)
    top = HORIZON * FINE - (sample(heights, z, x) - EYE_M) / distance * FOCAL * FINE
    horizon = int(HORIZON * FINE)
    lines = np.arange(horizon)[::-1]
    seen = np.minimum.accumulate(top, axis=1)
    air = np.array([0.48, 0.53, 0.64])
    for column in range(FINE):
        # `seen` falls with the distance; the first depth at which it is at or above the line.
        hit = np.searchsorted(-seen[column], -lines.astype(float))
        ground = hit < len(distance)
        depth, line = hit[ground], lines[ground]
        far = distance[depth]
        veil = 1 - np.exp(-((far / 17000) ** 1.35))
        for channel in range(3):
            color = sample(maps[channel], z[column, depth], x[column, depth])
            glow = air[channel] + (0.34, 0.12, -0.02)[channel] * np.exp(
                -((columns[column] + 0.42) ** 2) / 0.12
            )
            picture[channel][line, column] = color * (1 - veil) + glow * veil
    return picture


def mist(picture):
    """Thin fog over the far shore, thickest at the water."""
    line = np.arange(FINE)[:, None] / FINE
    band = np.exp(-(((HORIZON - line) / 0.030) ** 2)) * (line <= HORIZON)
    wisps = np.asarray(
        Image.fromarray(fractal((260, 700), 90, 5).astype("f4")).resize((FINE, FINE), Image.BICUBIC)
    )
    amount = np.clip(band * (0.05 + 1.15 * np.clip(wisps - 0.32, 0, 1)), 0, 0.8)
    for channel, white in enumerate((0.93, 0.80, 0.74)):
        picture[channel] += (white - picture[channel]) * amount


def water(picture):
    """Mirrors what stands above the horizon, stirred by ripples that grow towards the camera."""
    horizon = int(HORIZON * FINE)
    deep = FINE - horizon
    below = np.arange(deep)[:, None]
    near = below / deep
    plane = fractal((1400, 1400), 40, 6, 0.55)
    rows = np.clip(2600 / (below + 34.0) * 14, 0, 1390)
    columns = 700 + (np.arange(FINE)[None, :] - FINE / 2) * 8.0 / (below + 60.0)
    ripple = sample(plane, np.broadcast_to(rows, (deep, FINE)), columns) - 0.5
    source = horizon - 1 - below * 0.98 + ripple * (14 + 190 * near)
    source = np.clip(source, 0, horizon - 1)
    x = np.broadcast_to(np.arange(FINE)[None, :], source.shape).astype(float)
    fresnel = 0.86 - 0.50 * near**1.2
    bed = (0.030, 0.075, 0.085)
    for channel in range(3):
        blurred = Image.fromarray(picture[channel].astype("f4"))
        mirrored = sample(np.asarray(blurred), source, x + ripple * 40 * near)
        picture[channel][horizon:] = mirrored * fresnel + bed[channel] * (1 - fresnel)


def pines(image):
    """Dark pines on the near shore, left and right, drawn branch by branch."""
    draw = ImageDraw.Draw(image)
    ground = int(FINE * 0.985)
    across = np.arange(0, FINE + 4, 4)
    middle = (across / FINE - 0.55) / 0.55
    bank = (
        ground
        - 330 * middle**2 * (1 - 0.25 * (middle > 0))
        - 26 * fractal((1, len(across)), 60, 6)[0]
    )
    draw.polygon(
        [(0, FINE)] + list(zip(across.tolist(), bank.tolist())) + [(FINE, FINE)], fill=(12, 18, 17)
    )
    for _ in range(90):
        left = random.random() < 0.58
        spot = random.random() ** 1.25
        x = spot * 900 if left else FINE - spot * 620
        foot = ground - (300 if left else 200) * (1 - spot) - 20 + random.random() * 90
        height = (620 if left else 470) * (1 - 0.72 * spot) * (0.55 + 0.55 * random.random())
        pine(draw, x, foot + 30, height)


def pine(draw, x, foot, height):
    shade = int(random.integers(8, 20))
    color = (shade, shade + 7, shade + 5)
    lean = (random.random() - 0.5) * 0.03
    draw.polygon(
        [
            (x - height * 0.012, foot),
            (x + lean * height, foot - height),
            (x + height * 0.012, foot),
        ],
        fill=color,
    )
    for level in np.arange(0.03, 0.9, 0.022):
        tip = foot - height * (1 - level)
        reach = height * (0.02 + 0.20 * level) * (0.65 + 0.6 * random.random())
        for side in (-1, 1):
            long = reach * (0.75 + 0.5 * random.random())
            drop = height * 0.045 * (0.5 + random.random())
            middle = x + lean * (foot - tip)
            draw.polygon(
                [
                    (middle, tip - height * 0.012),
                    (middle + side * long * 0.55, tip + drop * 0.35),
                    (middle + side * long, tip + drop),
                    (middle + side * long * 0.45, tip + drop * 0.95),
                    (middle, tip + height * 0.03),
                ],
                fill=color,
            )


def to_screen(picture):
    """Linear light to sRGB with a soft shoulder for the brightest parts."""
    light = np.stack(picture, axis=2) * 0.98
    light = np.where(light > 0.62, 0.62 + 0.38 * (1 - np.exp(-(light - 0.62) / 0.38)), light)
    light = np.clip(light, 0, 1)
    coded = np.where(light <= 0.0031308, 12.92 * light, 1.055 * light ** (1 / 2.4) - 0.055)
    return Image.fromarray((coded * 255 + 0.5).astype(np.uint8))


def title(image):
    draw = ImageDraw.Draw(image, "RGBA")
    words = (
        ("F I R S T   L I G H T", 66, 0.172),
        ("SUMMER BY THE LAKE", 29, 0.228),
        ("2026", 29, 0.262),
    )
    for text, size, y in words:
        font = ImageFont.truetype(FONT, size)
        draw.text((SIDE / 2, SIDE * y), text, font=font, fill=(255, 255, 255, 240), anchor="mm")


def main():
    cell_m = MAP_M / MAP_CELLS
    heights = terrain()
    picture = look(heights, ground_color(heights, cell_m), cell_m)
    mist(picture)
    water(picture)
    image = to_screen(picture)
    pines(image)
    image = image.resize((SIDE, SIDE), Image.LANCZOS)
    title(image)
    image.save(
        os.path.join(os.path.dirname(os.path.abspath(__file__)), "lake.png"),
        optimize=True,
        dpi=(300, 300),
    )


if __name__ == "__main__":
    main()
