#!/usr/bin/env python3
"""Draws resize-methods.png: a test chart through every method, with labelled rows.

    resize_methods.py CONTACTSHEET     the program of examples/; needs python3-matplotlib and python3-pil

The chart is computed here: a zone plate, text and hatching. It is nobody's photograph.
"""
import subprocess
import sys
import tempfile
from pathlib import Path

import matplotlib

matplotlib.use("agg")
import matplotlib.pyplot as plt
import numpy as np
from PIL import Image, ImageDraw, ImageFont

SIDE, CELL, GAP = 640, 200, 10
ROWS = ["nearest", "linear", "cubic (Lagrange)", "cubic B-spline", "Catmull-Rom", "B = 0.5, C = 0.3", "Lanczos", "super"]

y, x = np.mgrid[0:SIDE, 0:SIDE] - SIDE / 2
zone = 127.5 + 127.5 * np.cos(np.pi * (x * x + y * y) / SIDE)
chart = np.repeat(zone[:, :, None], 3, axis=2)
chart[-150:, :] = 245
chart[-150:, -240:] = np.where(((x[-150:, -240:] * 0.9 + y[-150:, -240:]) % 6 < 3)[:, :, None], (200, 60, 40), (245, 245, 245))
image = Image.fromarray(chart.astype(np.uint8))
pen = ImageDraw.Draw(image)
font = str(Path(matplotlib.get_data_path()) / "fonts/ttf/DejaVuSans.ttf")
pen.text((14, SIDE - 142), "Resize methods", fill=(20, 30, 60), font=ImageFont.truetype(font, 40))
pen.text((14, SIDE - 84), "fine text: the quick brown fox", fill=(20, 30, 60), font=ImageFont.truetype(font, 22))
pen.text((14, SIDE - 44), "finer: jumps over the lazy dog 0123456789", fill=(20, 30, 60), font=ImageFont.truetype(font, 15))
# The detail that is enlarged is the middle: a letter stands there.
pen.text((SIDE / 2 - 14, SIDE / 2 - 20), "R", fill=(160, 20, 60), font=ImageFont.truetype(font, 34))

with tempfile.TemporaryDirectory() as folder:
    image.save(f"{folder}/chart.png")
    subprocess.run([sys.argv[1], "--out", f"{folder}/sheet.png", f"{folder}/chart.png"], check=True, stdout=subprocess.DEVNULL)
    sheet = np.asarray(Image.open(f"{folder}/sheet.png").convert("RGB"))

figure = plt.figure(figsize=(sheet.shape[1] / 100 + 1.5, sheet.shape[0] / 100 + 0.3), dpi=100)
width, height = figure.get_size_inches() * 100
figure.figimage(sheet, 150, 0)
for column, words in enumerate(("reduced", "reduced, antialiased", "enlarged")):
    figure.text((150 + GAP + CELL / 2 + column * (CELL + GAP)) / width, 1 - 16 / height, words, ha="center", fontsize=10)
for row, words in enumerate(ROWS):
    figure.text(8 / width, (sheet.shape[0] - GAP - CELL / 2 - row * (CELL + GAP)) / height, words, va="center", fontsize=10)
figure.savefig(Path(__file__).with_name("resize-methods.png"), metadata={"Software": None})
image = Image.open(Path(__file__).with_name("resize-methods.png")).convert("RGB").quantize(128)
image.save(Path(__file__).with_name("resize-methods.png"), optimize=True)
