# SPDX-License-Identifier: MIT
# That documents, messages and comments have none of the words in scripts/checks/words.txt.
# Exceptions are the files of scripts/checks/words_exceptions.txt.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need git python3
python3 - <<'PYTHON'
import pathlib
import re
import subprocess
import sys


def rows(name):
    lines = pathlib.Path("scripts/checks", name).read_text(encoding="utf-8").splitlines()
    return [line for line in lines if not line.startswith("#")]


words = [(re.compile(pattern, re.IGNORECASE), better)
         for pattern, better in (row.split("\t") for row in rows("words.txt"))]
exceptions = rows("words_exceptions.txt")
files = subprocess.run(["git", "ls-files"], capture_output=True, text=True, check=True).stdout.split("\n")
found = 0
for name in filter(None, files):
    if name in exceptions:
        continue
    try:
        text = pathlib.Path(name).read_text(encoding="utf-8")
    except (UnicodeDecodeError, FileNotFoundError, IsADirectoryError):
        continue  # a picture, or an input of a fuzzer
    if name.startswith("fuzz/corpus/") or name.endswith(".svg"):
        continue
    for number, line in enumerate(text.splitlines(), 1):
        for pattern, better in words:
            if better == "-":
                line = pattern.sub("", line)
            elif hit := pattern.search(line):
                print(f'{name}:{number}: "{hit[0]}": {better}')
                found += 1
for each in exceptions:
    if not pathlib.Path(each).is_file():
        print(f"scripts/checks/words_exceptions.txt: there is no file {each}")
        found += 1
sys.exit(1 if found else 0)
PYTHON
