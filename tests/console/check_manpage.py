#!/usr/bin/env python3
"""The man page and --help describe the same options: every option that
--help lists has an entry in the generated man page.

usage: check_manpage.py RUNNER MANPAGE
"""

import re
import subprocess
import sys


def main():
    runner, manpage = sys.argv[1:3]
    help_text = subprocess.run([runner, "--help"], capture_output=True, text=True, check=True).stdout
    options = re.findall(r"^  (-[^ \n]+)", help_text, re.M)
    with open(manpage, encoding="utf-8") as f:
        page = f.read().replace("\\-", "-")
    missing = [o for o in options if "\\fB" + o not in page]
    if len(options) < 10 or missing or ".TH ORVOBASIC 1" not in page:
        print("options --help lists: %s\nmissing from the man page: %s" % (options, missing))
        return 1
    print("%d options in both" % len(options))
    return 0


if __name__ == "__main__":
    sys.exit(main())
