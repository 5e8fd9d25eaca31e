# SPDX-License-Identifier: MIT
# hopexplain says yes exactly where a launch happens, and names what is executed.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

cat >recorder.c <<'END'
// Records how it was called: its path, whether a shell did it, and its arguments.
#include <fcntl.h>
#include <string.h>
#include <sys/auxv.h>
#include <unistd.h>
static void put(int out, const char* text) { (void)!write(out, text, strlen(text) + 1); }
int main(int count, char** arguments) {
  const char* path = (const char*)getauxval(AT_EXECFN);
  const int out = open(RECORD, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  const int shell = count > 2 && strcmp(arguments[1], "--by-shell") == 0;
  const int script = !shell && strcmp(path, arguments[0]) != 0 && strcmp(arguments[0], RECORDER) == 0;
  put(out, shell ? "shell" : script ? "script" : "itself");
  put(out, shell ? arguments[2] : path);
  for (int index = shell ? 3 : script ? 2 : 0; index < count; index++) put(out, arguments[index]);
  return 7;
}
END
mkdir agreement
gcc -O1 -static -DRECORD="\"$scratch/agreement/record\"" -DRECORDER="\"$scratch/agreement/recorder\"" \
  -o agreement/recorder recorder.c
python_limit=$((120 + ${EDGES_RANDOM:-400} / 10))
from_python edges_agreement.py "$launch" "$explain" "$scratch/agreement" "${EDGES_RANDOM:-400}"
