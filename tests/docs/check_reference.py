#!/usr/bin/env python3
"""Keeps the language reference honest.

1. Every statement word and every built-in function name of the vocabulary
   (read from the interpreter's own tables) has an entry: a "### " heading
   that names it (a heading may name several words, separated by " / ").
2. Every ```basic example in the reference runs through the runner as a
   golden script: its "# expect:" and "# expect error N" comments must hold.

usage: check_reference.py --runner PATH --golden RUN_GOLDEN.py --source-dir DIR REFERENCE.md
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile

STATEMENT_WORD = re.compile(r'\{u"([a-z]+)", CMD_[A-Z]+\}')
BUILT_IN_NAME = re.compile(r'\{u"([a-z0-9]+)", FT_[A-Z0-9]+,')
HEADING = re.compile(r"^### (.+)$")
FENCE_OPEN = re.compile(r"^```basic\s*$")


def vocabulary(source_dir):
    """The statement words and built-in names the interpreter knows."""
    with open(os.path.join(source_dir, "src/lang/Vocabulary.cpp"), encoding="utf-8") as f:
        words = set(STATEMENT_WORD.findall(f.read()))
    with open(os.path.join(source_dir, "src/functions/FunctionTable.cpp"), encoding="utf-8") as f:
        words |= set(BUILT_IN_NAME.findall(f.read()))
    return words


def entries(reference):
    """(words named by each heading, [example texts]) in document order."""
    result = []
    in_example = False
    for line in reference.splitlines(keepends=True):
        if in_example:
            if line.startswith("```"):
                in_example = False
            else:
                result[-1][1][-1] += line
            continue
        heading = HEADING.match(line)
        if heading:
            words = {w for part in heading.group(1).split(" / ") for w in part.split()}
            result.append((words, []))
        elif FENCE_OPEN.match(line) and result:
            result[-1][1].append("")
            in_example = True
    return result


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--runner", required=True)
    parser.add_argument("--golden", required=True)
    parser.add_argument("--source-dir", required=True)
    parser.add_argument("reference")
    args = parser.parse_args()
    with open(args.reference, encoding="utf-8") as f:
        found = entries(f.read())

    documented = set().union(*(words for words, _ in found)) if found else set()
    missing = sorted(vocabulary(args.source_dir) - documented)
    if missing:
        print("no reference entry for: " + ", ".join(missing))

    with tempfile.TemporaryDirectory(prefix="ob-reference-") as tmp:
        scripts = []
        for number, (words, examples) in enumerate(found):
            for k, text in enumerate(examples):
                name = "%03d_%s_%d.bas" % (number, sorted(words)[0], k)
                path = os.path.join(tmp, name)
                with open(path, "w", encoding="cp1252") as out:
                    out.write(text)
                scripts.append(path)
        if not scripts:
            print("the reference has no examples")
            return 1
        run = subprocess.run([sys.executable, args.golden, "--runner", os.path.abspath(args.runner)] + scripts)
    return 1 if missing or run.returncode else 0


if __name__ == "__main__":
    sys.exit(main())
