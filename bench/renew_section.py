#!/usr/bin/env python3
"""Puts texts between the marker comments of a document.

Usage: renew_section.py DOCUMENT NAME FILE [NAME FILE ...]

The text of FILE replaces what stands between the lines <!-- NAME: begin --> and <!-- NAME: end -->.
"""
import sys
from pathlib import Path


def renewed(document, name, text):
    begin, end = (f"<!-- {name}: {place} -->\n" for place in ("begin", "end"))
    before, _, rest = document.partition(begin)
    _, found, after = rest.partition(end)
    if not found:
        sys.exit(f"renew_section.py: no section {name}")
    return f"{before}{begin}\n{text.strip()}\n\n{end}{after}"


def main(document, *sections):
    text = Path(document).read_text(encoding="utf-8")
    for name, file in zip(sections[::2], sections[1::2]):
        text = renewed(text, name, Path(file).read_text(encoding="utf-8"))
    Path(document).write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
