"""Thumbnails of photographs side by side: filtered down by the plug-in, laid out and labelled by Pillow.

python3 contact_sheet.py RESULT PHOTO...
"""

import pathlib
import sys

from PIL import Image, ImageDraw

import tqx

P = tqx.PictureTQX
SIDE, GAP, COLUMNS = 160, 8, 4

result, photos = sys.argv[1], sys.argv[2:]
rows = -(-len(photos) // COLUMNS)
columns = min(len(photos), COLUMNS)
sheet = Image.new("RGB", (columns * (SIDE + GAP) + GAP, rows * (SIDE + GAP + 12) + GAP), "white")
draw = ImageDraw.Draw(sheet)
for i, path in enumerate(photos):
    photo = P.from_array(tqx.imread(path))
    scale = SIDE / max(photo.Width, photo.Height)
    width, height = max(round(photo.Width * scale), 1), max(round(photo.Height * scale), 1)
    small = P(width, height, P.ImageFormatRGB)
    if not small.Scale(photo, None, P.ScaleLanczos3, width, height):
        sys.exit(f"{path}: {tqx.explain()}")
    x, y = GAP + i % COLUMNS * (SIDE + GAP), GAP + i // COLUMNS * (SIDE + GAP + 12)
    sheet.paste(Image.fromarray(small), (x + (SIDE - width) // 2, y + (SIDE - height) // 2))
    draw.text((x, y + SIDE), pathlib.Path(path).name, "black")
sheet.save(result)
print(f"{len(photos)} photographs on {sheet.width} x {sheet.height} pixels")
