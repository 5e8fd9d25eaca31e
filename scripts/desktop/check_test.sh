#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows that `hopopen --check` finds nothing wrong with the installed package beside a
# browser, and that it names each cause for which a click does nothing: one at a time, and
# all together.  Causes are made with the tools and in the places that people use.
#
# A part of ./test --desktop, which runs it in a clean Debian.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/desktop/in_clean_debian.sh
source scripts/desktop/in_clean_debian.sh
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

# --- What the check says -----------------------------------------------------------

# complaints: "STATE NAME" of each line that is not "ok", the same ones once.
complaints() { hopopen --check | sed -n 's/^\(warning\|fault\) \([^:]*\):.*/\1 \2/p' | uniq; }

# schemes: those that have a definition.
schemes() {
  hopopen --list --format=json |
    python3 -c 'import json, sys
print(*sorted({scheme for one in json.load(sys.stdin)["viewers"] for scheme in one["schemes"]}), sep="\n")'
}

# each LINE: the line with each scheme after it.
each() {
  local scheme
  for scheme in $(schemes); do
    printf '%s %s\n' "$1" "$scheme"
  done
}

# says_only LINE...: these are the complaints, and the exit status is that of the worst.
says_only() {
  local status=0 expected=0
  diff <(printf '%s' "${1:+$(printf '%s\n' "$@")$'\n'}") <(complaints) || return
  hopopen --check >/dev/null || status=$?
  [[ " $* " != *fault* ]] || expected=4
  ((status == expected))
}

# says_only_viewers: nothing but viewers that are not installed.
says_only_viewers() {
  hopopen --check || return
  ! complaints | grep -v '^warning viewer '
}

# --- Causes --------------------------------------------------------------------------

entries=/usr/share/applications
away=$(mktemp -d)
trap 'rm -rf "$away"' EXIT

# move_away FILE...; bring_back: puts all of them back.
move_away() {
  local file
  for file; do
    [[ -e $file ]] || continue
    mkdir -p "$away$(dirname "$file")" && mv "$file" "$away$file" || return
  done
}
bring_back() {
  cp -a "$away/." / && find "$away" -mindepth 1 -delete
}

put() {
  mkdir -p "$(dirname "$1")" && cat >"$1"
}

other_handler() {
  put "$entries/other.desktop" <<'FILE'
[Desktop Entry]
Type=Application
Name=Other
Exec=xterm -e %u
FILE
}

plant() {
  case $1 in
    user_list) other_handler && xdg-mime default other.desktop x-scheme-handler/vnc ;;
    system_list)
      other_handler
      put /etc/xdg/mimeapps.list <<<$'[Default Applications]\nx-scheme-handler/vnc=other.desktop'
      ;;
    entry) move_away "$entries/hopopen.desktop" ;;
    tryexec) cp /usr/bin/hopopen /usr/local/bin/hopopen ;;
    cache) move_away "$entries/mimeinfo.cache" ;;
    opener) move_away /usr/bin/xdg-open /usr/bin/gio ;;
    chromium) put /etc/chromium/policies/managed/links.json <<<'{"URLBlocklist": ["vnc:*"]}' ;;
    firefox)
      put /etc/firefox/policies/policies.json \
        <<<'{"policies": {"WebsiteFilter": {"Block": ["<all_urls>"]}}}'
      ;;
    unreadable) put /etc/chromium/policies/managed/broken.json <<<'{"URLBlocklist": ' ;;
    profile)
      put "$HOME/.config/chromium/Default/Preferences" \
        <<<'{"protocol_handler": {"excluded_schemes": {"vnc": true}}}'
      ;;
    sandbox) mkdir -p /snap/chromium/current ;;
    viewer) put "$HOME/.config/hoplaunch/hopopen.toml" <<<$'[use]\nvnc = "nothing"' ;;
    notifier) move_away /usr/bin/{notify-send,zenity,kdialog,xmessage} ;;
    semaphores) echo '250 32000 100 9' >/proc/sys/kernel/sem ;;
    file) mkdir -p "$HOME/.local/share/applications" && mkfifo "$_/mimeapps.list" ;;
    definition) put "$HOME/.config/hoplaunch/viewers/faulty.toml" <<<'colour = 1' ;;
    settings) put /etc/xdg/hoplaunch/hopopen.toml <<<'use = 1' ;;
  esac
}

heal() {
  bring_back
  rm -rf "$HOME/.config" "$HOME/.local" /etc/xdg/{mimeapps.list,hoplaunch} \
    /etc/chromium/policies /etc/firefox /snap /usr/local/bin/hopopen "$entries/other.desktop"
  echo '32000 1024000000 500 32000' >/proc/sys/kernel/sem
}

# finds CAUSE LINE...: what the check says of the cause, and that it is gone with it.
finds() {
  local status=0
  plant "$1" && says_only "${@:2}" || status=$?
  heal
  return "$status"
}

export HOME=/root DISPLAY=:7
unset WAYLAND_DISPLAY

check 'install' install_package
heal
check 'a clean install has no fault' says_only_viewers
mapfile -t usual < <(complaints) # viewers for which there is no package here
mapfile -t no_handler < <(each 'fault handler')

check 'the own list names another' finds user_list 'warning handler vnc' "${usual[@]}"
check "the system's list names another" finds system_list 'fault handler vnc' "${usual[@]}"
check 'no entry' finds entry "${no_handler[@]}" 'fault entry' "${usual[@]}"
check 'another hopopen' finds tryexec 'warning tryexec' "${usual[@]}"
check 'no cache' finds cache "${no_handler[@]}" 'warning cache' "${usual[@]}"
check 'no opener' finds opener 'warning opener' "${usual[@]}"
check 'a policy of Chromium' finds chromium 'fault policy chromium' "${usual[@]}"
check 'a policy of Firefox' finds firefox 'fault policy firefox' "${usual[@]}"
check 'a policy that cannot be read' finds unreadable 'warning policy chromium' "${usual[@]}"
check 'a profile' finds profile 'warning profile' "${usual[@]}"
check 'a snap' finds sandbox 'warning sandbox' "${usual[@]}"
check 'no display' env DISPLAY= bash -c "$(declare -f complaints); complaints | grep -qx 'warning display'"
check 'the chosen viewer' finds viewer "${usual[@]}" 'fault viewer vnc'
check 'no notifier' finds notifier "${usual[@]}" 'warning notifier'
check 'few semaphores' finds semaphores "${usual[@]}" 'warning semaphores'
check 'no file' finds file "${usual[@]}" 'warning file'
check 'a definition' finds definition "${usual[@]}" 'fault definition'
check 'the settings' finds settings "${usual[@]}" 'fault settings'

# All that can be at once.
for cause in user_list tryexec opener chromium firefox unreadable profile sandbox viewer notifier \
  semaphores file definition settings; do
  plant "$cause"
done
check 'all together' says_only 'warning handler vnc' 'warning tryexec' 'warning opener' \
  'warning policy chromium' 'fault policy chromium' 'fault policy firefox' 'warning profile' \
  'warning sandbox' "${usual[@]}" 'fault viewer vnc' 'warning notifier' 'warning semaphores' \
  'warning file' 'fault definition' 'fault settings'
heal
check 'all is well again' says_only "${usual[@]}"

closing_line
