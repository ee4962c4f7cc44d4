# Prints a line of C++ for every function that the document of return codes has a table for: its
# form, and the results of the table, each with a blank behind it.
# Usage: documented_codes.py DOCUMENT
import pathlib
import re
import sys

forms = []
for paragraph in pathlib.Path(sys.argv[1]).read_text().split("\n\n"):
    results = re.findall(r"^\| (-?\w+) \|", paragraph, re.M)[1:]
    for form in forms if results else ():
        print(f'{{"{form}", "{" ".join(results)} "}},')
    forms = re.findall(r"`([^`]*\))`", paragraph)
