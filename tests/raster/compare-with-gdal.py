#!/usr/bin/env python3
"""Compares kelvox-tool's raster geo-referencing with GDAL's reading of the same charts.

Usage: compare-with-gdal.py KELVOX_TOOL [CHART...]; without charts those below $KELVOX_DATA/raster.

GDAL fits polynomials of its own, in the chart's projection, to the reference points, here of the
same order as the header's. Compared at the picture's centre and at the corners of the charted area
(of the picture where the header has no border); beyond the outermost reference points both only
guess. Ends with 77 (skipped) without GDAL or charts, with 1 when a chart differs by more than one pixel; where
the header has no polynomials, by more than our own fit leaves over at the reference points besides.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys


def numbers(command, text=None):
    output = subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout
    return [tuple(map(float, re.split(r"[ ,]+", line.strip())[:2]))
            for line in output.splitlines() if line.strip()]


def compare(tool, chart):
    with open(chart, "rb") as file:
        header = file.read(1 << 20).split(b"\x1a")[0].decode("latin-1")
    size = re.search(r"RA=(\d+),(\d+)", header)
    width, height = int(size[1]), int(size[2])
    references = [tuple(map(float, m.groups())) for m in
                  re.finditer(r"REF/\d+,([\d.-]+),([\d.-]+),([\d.-]+),([\d.-]+)", header)]
    if len(references) < 3:
        return None
    centre = ((width - 1) / 2, (height - 1) / 2)
    corners = [(float(m[1]), float(m[2])) for m in
               re.finditer(r"PLY/\d+,([\d.-]+),([\d.-]+)", header)]
    places = [tuple(numbers([tool, "raster", chart, f"--position={latitude},{longitude}"])[0])
              for latitude, longitude in corners]
    places += [centre] if places else [centre, (0, 0), (width - 1, 0), (0, height - 1),
                                       (width - 1, height - 1)]
    level = re.search(r"WPX/(\d)", header)
    order = ["-order", level[1]] if level else []
    gdal = numbers(["gdaltransform", *order, "-t_srs", "EPSG:4326", chart],
                   "".join(f"{x} {y}\n" for x, y in places))
    worst = 0
    for (x, y), (longitude, latitude) in zip(places, gdal):
        ours = numbers([tool, "raster", chart, f"--position={latitude},{longitude}"])[0]
        worst = max(worst, abs(ours[0] - x), abs(ours[1] - y))
    residual = 0
    for x, y, latitude, longitude in references[::max(1, len(references) // 12)]:
        ours = numbers([tool, "raster", chart, f"--position={latitude},{longitude}"])[0]
        residual = max(residual, abs(ours[0] - x), abs(ours[1] - y))
    return worst, residual, 1 if level else 1 + residual


def main():
    folder = pathlib.Path(os.environ.get("KELVOX_DATA", ""), "raster")
    charts = sys.argv[2:] or sorted(str(path) for path in folder.glob("*.[kK][aA][pP]"))
    if not shutil.which("gdaltransform") or not charts:
        print("no gdaltransform or no charts")
        return 77
    failed = 0
    print("corners and centre  reference points  chart  (largest difference in pixels)")
    for chart in charts:
        result = compare(sys.argv[1], chart)
        if result is None:
            continue
        print(f"{result[0]:18.2f}  {result[1]:16.2f}  {chart}")
        failed += result[0] > result[2]
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
