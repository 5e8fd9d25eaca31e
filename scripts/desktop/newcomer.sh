#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Does what README.md says under "Install", to the letter, and then clicks on a link: the screen
# of another machine must appear.  A part of scripts/releases.sh, which runs it as root in a
# minimal Debian with a clone and nothing else.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
if [[ ! -d /result || $EUID != 0 ]]; then
  printf 'This is a part of scripts/releases.sh, and runs in a Debian of its own.\n' >&2
  exit 1
fi

# --- As the README says --------------------------------------------------------------

section=$(sed -n '/^## Install$/,/^## Links$/p' README.md)
commands=$(sed -n 's/^    //p' <<<"$section")
# shellcheck disable=SC2016  # of Markdown
viewer=$(sed -n '/`\([a-z-]*\)` for `vnc:` links.*/{s//\1/;s/.*[^a-z-]//;p;q}' <<<"$section")
printf 'The README says:\n%s\nand, if there is no viewer: %s\n\n' "$commands" "$viewer"
export DEBIAN_FRONTEND=noninteractive
bash -e -c "$commands" < <(yes 2>/dev/null)
if ! command -v xtigervncviewer >/dev/null; then
  apt-get install -y --no-install-recommends "$viewer"
fi

# --- A desktop, a machine somewhere, and the click ------------------------------------

apt-get install -y -qq --no-install-recommends imagemagick iproute2 openbox procps python3 \
  tigervnc-standalone-server wmctrl x11-apps x11-xserver-utils xdg-utils xvfb >/dev/null
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh
# shellcheck source=scripts/desktop/screen_checks.sh
source scripts/desktop/screen_checks.sh
# shellcheck source=scripts/desktop/remote_machine.sh
source scripts/desktop/remote_machine.sh
# shellcheck disable=SC2034  # where screenshots go
pictures=/result
use_scratch_home
start_screen
start_remote_desktop
# shellcheck disable=SC2034  # of the window
title='remote desktop - TigerVNC'
show newcomer shows_desktop xdg-open "vnc://localhost:$vnc_port"
closing_line
