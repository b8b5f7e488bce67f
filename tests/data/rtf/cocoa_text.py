#!/usr/bin/env python3
"""Drafts the plain text of a TextEdit (Cocoa) RTF file, for review by eye.

Used once to draft the expected texts beside this script; it is not part of the
program or its tests. It relies on the regular layout Cocoa writes (one control
word group per line start, "\\" + newline for a paragraph break, no nested text
groups other than hyperlink fields) rather than on an RTF parser, so that the
expected texts do not come from the code they check.

Usage: cocoa_text.py FILE.rtf > FILE.txt
Runs of two or more \\'hh escapes are decoded as Shift-JIS (the Japanese
fixture's CJK font), single ones as Windows-1252.
"""
import re
import sys

data = open(sys.argv[1], encoding="ascii").read()
# Drop the header: everything before the first \pard.
body = data[data.index("\\pard"):]
# Drop the closing brace of the document.
assert body.endswith("}") or body.endswith("}\n")
body = body.rstrip("\n")[:-1]
# Hyperlink fields: keep only the result text.
body = re.sub(r'\{\\field\{\\\*\\fldinst\{[^{}]*\}\}\{\\fldrslt ((?:\\[a-z]+\d* )*)([^{}]*)\}\}',
              lambda m: m.group(2), body)
# Paragraph-style lines.
body = re.sub(r"\\pard[^\n]*\n", "", body)
# Paragraph breaks: backslash + newline. Mark them before removing newlines.
body = body.replace("\\\n", "\x00")
# Escaped characters.
body = body.replace("\\\\", "\x01").replace("\\{", "{").replace("\\}", "}")
# Line ends in the file are layout only.
body = body.replace("\n", "")
# \uc0\uN : Unicode escapes (no fallback characters in Cocoa files).
body = body.replace("\\uc0", "")
body = re.sub(r"\\u(\d+) ?", lambda m: chr(int(m.group(1))), body)
# Hex escapes.
def hex_run(m):
    raw = bytes(int(h, 16) for h in re.findall(r"\\'([0-9a-f]{2})", m.group(0)))
    return raw.decode("cp932" if len(raw) >= 2 else "cp1252")
body = re.sub(r"(?:\\'[0-9a-f]{2})+", hex_run, body)
# Every other control word, with the space that ends it.
body = re.sub(r"\\[A-Za-z]+-?\d* ?", "", body)
body = body.replace("\x00", "\n").replace("\x01", "\\")
sys.stdout.write(body)
