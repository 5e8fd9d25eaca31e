#!/usr/bin/env bash
# Shows what people see of a link that is refused, with the installed package: the message
# with each of the programs that can show it, as the only one there.  The link tries markup,
# escapes, options and control characters; the text on the screen is read back, letter by
# letter, and has the link as it is.
#
# A part of ./test --desktop, which runs it in a clean Debian.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/in_clean_debian.sh
source scripts/in_clean_debian.sh
# shellcheck source=scripts/scratch_desktop.sh
source scripts/scratch_desktop.sh
# shellcheck source=scripts/screen_checks.sh
source scripts/screen_checks.sh
# shellcheck source=scripts/browser.sh
source scripts/browser.sh

use_scratch_home
start_screen
xsetroot -solid '#495057'
service dbus dbus-daemon --session --nofork --print-address=3 3>"$scratch/bus"
ready dbus test -s "$scratch/bus"
DBUS_SESSION_BUS_ADDRESS=$(cat "$scratch/bus")
export DBUS_SESSION_BUS_ADDRESS
service dunst dunst
ready dunst dunstctl count

notifiers=(notify-send zenity kdialog xmessage)
for notifier in "${notifiers[@]}"; do
  # A PATH on which it is the only one of them.
  mkdir "$scratch/only_$notifier"
  ln -s /usr/bin/* "$scratch/only_$notifier"
  for other in "${notifiers[@]}"; do
    [[ $other == "$notifier" ]] || rm "$scratch/only_$notifier/$other"
  done
done

# --- Reading the screen ----------------------------------------------------------

# read_screen: the text on it, without blanks and line ends.
read_screen() {
  screenshot | convert xwd:- -colorspace Gray -resize 300% -unsharp 0x1 png:- |
    tesseract - - --psm "${1:-11}" 2>/dev/null | tr -d '[:space:]'
}
