#!/usr/bin/env python3
"""Makes the orvobasic(1) man page from the runner's --help text.

usage: make_manpage.py USAGE.txt VERSION OUT.1

The help text's first paragraph (the usage lines) becomes the synopsis, the
paragraphs before "options:" the description, each option an entry of its
own, and the paragraphs after the options the notes; a paragraph that starts
with "exit status:" becomes that section. So --help and the man page say
the same, from one source.
"""

import re
import sys

OPTION_COLUMN = 17


def roff(text):
    """Escapes text for a roff line."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return ("\\&" + text) if text[:1] in (".", "'") else text


def paragraphs(lines):
    block = []
    for line in lines:
        if line.strip():
            block.append(line)
        elif block:
            yield block
            block = []
    if block:
        yield block


def option_entries(block):
    """(term, description lines) for each option of the "options:" block."""
    entries = []
    for line in block[1:]:
        if line.startswith("  -"):
            term, _, rest = line[2:].partition("  ")
            entries.append((term.rstrip(), [rest.strip()] if rest.strip() else []))
        elif entries:
            entries[-1][1].append(line.strip())
    return entries


def main():
    usage_path, version, out_path = sys.argv[1:4]
    with open(usage_path, encoding="utf-8") as f:
        blocks = list(paragraphs(f.read().splitlines()))
    out = ['.TH ORVOBASIC 1 "" "orvobasic %s" "User Commands"' % version,
           ".SH NAME", "orvobasic \\- run OrvoBasic scripts", ".SH SYNOPSIS"]
    for line in blocks[0]:
        out += [".nf" if line is blocks[0][0] else "", roff(re.sub(r"^(usage:)?\s*", "", line))]
    out = [l for l in out if l != ""] + [".fi", ".SH DESCRIPTION"]
    rest = blocks[1:]
    while rest and rest[0][0].strip() != "options:":
        out += [".PP"] + [roff(l.strip()) for l in rest.pop(0)]
    if rest:
        out.append(".SH OPTIONS")
        for term, description in option_entries(rest.pop(0)):
            out += [".TP", "\\fB%s\\fR" % roff(term)] + [roff(l) for l in description]
    notes_started = False
    for block in rest:
        if block[0].startswith("exit status:"):
            out += [".SH EXIT STATUS", roff(block[0][len("exit status:"):].strip())]
            out += [roff(l.strip()) for l in block[1:]]
            continue
        if not notes_started:
            out.append(".SH NOTES")
            notes_started = True
        out.append(".PP")
        for line in block:
            if line.startswith("    "):   # an example line, kept as it stands
                out += [".nf", roff(line.strip()), ".fi"]
            else:
                out.append(roff(line.strip()))
    with open(out_path, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
