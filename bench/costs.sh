# SPDX-License-Identifier: MIT
# The costs of hardening, and of names of functions in stack traces: bytes of hoplaunch, and
# user instructions of a launch.  Keeps the tables in docs/figures/ (see scripts/figures).
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib.sh
need "${build_packages[@]}" binutils python3 valgrind
folder=$PWD/build/costs

# built NAME OPTION...
built() {
  cmake --preset release -B "$folder/$1" -DHOPLAUNCH_TESTS=OFF -DHOPLAUNCH_SHARED=OFF "${@:2}" &&
    cmake --build "$folder/$1" --target hoplaunch
}
quietly "$folder/with.log" built with
quietly "$folder/without_hardening.log" built without_hardening -DHOPLAUNCH_HARDENING=OFF
# The same objects, linked without the list of exported names.
link=$(ninja -C "$folder/with" -t commands hoplaunch | tail -n 1 |
  sed "s#-Wl,--dynamic-list=[^ ]*##; s# -o hoplaunch # -o $folder/without_names #")
(cd "$folder/with" && bash -c "$link")

# figures_of PROGRAM: bytes, bytes when stripped, exported names, and instructions.
figures_of() {
  local name
  name=$folder/$(basename "$(dirname "$1")")_$(basename "$1")
  strip -o "$name.stripped" "$1"
  env -i "PATH=$PATH" valgrind -q --tool=callgrind --callgrind-out-file="$name.calls" \
    --dump-before=execvp "$1" -program=/bin/true 'vnc://localhost:5900/?shared=1' >/dev/null 2>&1
  stat -c %s "$1" "$name.stripped"
  readelf --wide --dyn-syms "$1" | sed -n 's/.*contains \([0-9]*\) entr.*/\1/p'
  sed -n 's/^totals: //p' "$name.calls.1"
}
python3 - "$(figures_of "$folder/with/hoplaunch")" \
  "$(figures_of "$folder/without_hardening/hoplaunch")" "$(figures_of "$folder/without_names")" <<'END'
import sys
sys.path.insert(0, "scripts")
import figures

with_all, soft, nameless = ([int(number) for number in text.split()] for text in sys.argv[1:])
NAMES = ("bytes", "stripped, bytes", "entries of the dynamic symbol table",
         "user instructions of a launch")


def table(without, lines):
    rows = []
    for line in lines:
        cost = with_all[line] - without[line]
        share = "" if line == 2 else f" ({100 * cost / without[line]:.1f} %)"
        rows.append([NAMES[line], f"{with_all[line]:,}", f"{without[line]:,}", f"{cost:,}{share}"])
    return {"head": ["`hoplaunch`", "with", "without", "cost"], "rows": rows}


figures.keep("costs", "bash bench/costs.sh", tables={
    "hardening": table(soft, (0, 3)), "names": table(nameless, range(4))})
END
