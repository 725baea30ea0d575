#!/usr/bin/python3
"""Cuts the Latin letters, digits and signs out of one face of a CJK font into a small font of its
own, "Tidemark Figures": the orb draws its figures with the CJK font's own Latin glyphs without
loading the whole CJK font. Usage: figures-font.py SOURCE FACE-NUMBER STYLE OUTPUT"""
import sys

from fontTools import subset
from fontTools.ttLib import TTFont

source, number, style, output = sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.argv[4]
font = TTFont(source, fontNumber=number)
options = subset.Options()
options.layout_features = ["*"]
options.name_IDs = ["*"]
options.name_languages = ["*"]
options.notdef_outline = True
subsetter = subset.Subsetter(options)
# Printable ASCII, the no-break space, and the middle dot, dash, bullet, ellipsis and minus the
# figures and the masked texts use.
subsetter.populate(unicodes=[*range(0x20, 0x7F), 0xA0, 0xB7, 0x2014, 0x2022, 0x2026, 0x2212])
subsetter.subset(font)

family = "Tidemark Figures"
postscript = "TidemarkFigures-" + style
names = {1: family, 2: style, 3: postscript, 4: f"{family} {style}", 6: postscript,
         16: family, 17: style}
table = font["name"]
table.names = [record for record in table.names if record.nameID not in names]
for name_id, text in names.items():
    table.setName(text, name_id, 3, 1, 0x409)
    table.setName(text, name_id, 1, 0, 0)
if "CFF " in font:
    font["CFF "].cff.fontNames = [postscript]
font.save(output)
