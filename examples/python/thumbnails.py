#!/usr/bin/env python3
"""Thumbnails of all photographs of a folder, with a progress bar.

    thumbnails.py FOLDER OUT_FOLDER [--size 160] [--method lanczos]
"""
import argparse
from pathlib import Path

import numpy as np
from PIL import Image, UnidentifiedImageError
from tqdm import tqdm

import morvenqvr as qvr


def thumbnail(path, size, method):
    """The picture within a square of the size, its proportions kept; pictures that fit already stay as they are."""
    with Image.open(path) as file:
        pixels = np.array(file.convert("RGBA"))
    height, width = pixels.shape[:2]
    scale = size / max(height, width)
    if scale < 1:
        shape = max(1, round(height * scale)), max(1, round(width * scale))
        pixels = qvr.resize(pixels, shape, method=method, antialias=method not in ("area", "nearest"))
    return Image.fromarray(pixels).convert("RGB")


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("folder", type=Path)
    arguments.add_argument("target", type=Path)
    arguments.add_argument("--size", type=int, default=160)
    arguments.add_argument("--method", choices=qvr.METHODS, default="lanczos")
    options = arguments.parse_args()
    files = sorted(p for p in options.folder.iterdir() if p.suffix.lower() in (".jpg", ".jpeg", ".png"))
    options.target.mkdir(parents=True, exist_ok=True)
    made = 0
    for path in tqdm(files, unit="photo"):
        try:
            thumbnail(path, options.size, options.method).save(options.target / (path.stem + ".jpg"), quality=88)
            made += 1
        except (UnidentifiedImageError, OSError) as error:
            tqdm.write(f"{path}: {error}")
    print(f"{made} of {len(files)} thumbnails in {options.target}")


if __name__ == "__main__":
    main()
