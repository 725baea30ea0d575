#!/usr/bin/env python3
"""Writes src/model/PinyinInitials.cpp: the initials of each Han character the local securities'
names use, so that "gzmt" finds 贵州茅台 without any service.

Run again after a name with a new character joins resources/tidemark-quotes.json or
src/model/DemoMarket.cpp; the test PinyinInitials.EveryLocalNameIsCovered says when.
Readings come from Unicode's Unihan database (Debian package unicode-data): the modern readings
of kMandarin, kHanyuPinlu, kXHC1983 and kTGHZ2013, so that a character read two ways (行 in
银行 is háng, elsewhere xíng) answers to both initials.
"""
import bz2
import json
import pathlib
import re
import sys
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNIHAN = pathlib.Path("/usr/share/unicode/Unihan_Readings.txt.bz2")
FIELDS = {"kMandarin", "kHanyuPinlu", "kXHC1983", "kTGHZ2013"}


def is_han(c):
    return "\u3400" <= c <= "\u9fff" or "\uf900" <= c <= "\ufaff"


def local_characters():
    names = [q["name"] for q in json.loads((ROOT / "resources/tidemark-quotes.json").read_text())["quotes"]]
    names.append((ROOT / "src/model/DemoMarket.cpp").read_text())
    return sorted({c for name in names for c in name if is_han(c)})


def readings():
    initials = {}
    with bz2.open(UNIHAN, "rt", encoding="utf-8") as lines:
        for line in lines:
            parts = line.rstrip("\n").split("\t")
            if len(parts) != 3 or parts[1] not in FIELDS:
                continue
            char = chr(int(parts[0][2:], 16))
            for word in re.findall(r"[^\s\d.:,()]+", parts[2]):
                first = unicodedata.normalize("NFD", word)[0].lower()
                if "a" <= first <= "z":
                    initials.setdefault(char, set()).add(first)
    return initials


def main():
    table = readings()
    chars = local_characters()
    missing = [c for c in chars if c not in table]
    if missing:
        sys.exit("no reading for " + "".join(missing))
    rows = "\n".join(f'    {{0x{ord(c):04X}, "{"".join(sorted(table[c]))}"}},  // {c}' for c in chars)
    (ROOT / "src/model/PinyinInitials.cpp").write_text(f"""// Written by scripts/pinyin-initials.py from Unicode's Unihan readings; run it again rather than
// editing by hand.

#include "model/PinyinInitials.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tidemark {{

std::string_view pinyinInitials(char32_t character) {{
  static constexpr std::array<std::pair<char32_t, std::string_view>, {len(chars)}> table{{{{
{rows}
  }}}};
  const auto* found = std::lower_bound(
      table.begin(), table.end(), character,
      [](const auto& entry, char32_t c) {{ return entry.first < c; }});
  return found != table.end() && found->first == character ? found->second : std::string_view();
}}

}}  // namespace tidemark
""")


main()
