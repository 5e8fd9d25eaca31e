# SPDX-License-Identifier: MIT
# Sourced by the tests of links after screen_checks.sh: a page with a link, and Chromium, in
# which the link is clicked.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # shared with scratch_desktop.sh and the tests

# The link has colours of its own with and without the mouse on it.
link_colour='#E76F51'
hover_colour='#2A9D8F'
web_port=8000

# start_web_server: serves the pages of "page", and lets Chromium hand their links to the
# handler without a question.
start_web_server() {
  local policies=/etc/chromium/policies/managed scheme rules=()
  mkdir "$scratch/web"
  service web python3 -u -m http.server "$web_port" --bind 127.0.0.1 --directory "$scratch/web"
  ready web grep -q 'Serving HTTP' "$scratch/web.log"
  for scheme in vnc rdp spice spice+tls ssh telnet; do
    rules+=("{\"protocol\": \"$scheme\", \"allowed_origins\": [\"http://localhost:$web_port\"]}")
  done
  mkdir -p "$policies"
  printf '{"AutoLaunchProtocolsFromOrigins": [%s]}\n' \
    "$(IFS=,; printf '%s' "${rules[*]}")" >"$policies/links.json"
}

# page NAME LINK: a page at /NAME.html that has the link, which is written as it is.
page() {
  cat >"$scratch/web/$1.html" <<END
<!DOCTYPE html>
<meta charset="utf-8">
<title>Machines</title>
<style>
  body { font: 18px sans-serif; margin: 2em }
  a { background: $link_colour; color: white; display: inline-block; padding: 1em 2em }
  a:hover { background: $hover_colour }
</style>
<h1>Machines</h1>
<p><a href='$2'>Desktop of the build machine</a>
END
}

# browser NAME: the command that shows the page, in the array "chromium".  As root there is
# no sandbox, and --test-type hides the warning about it.
browser() {
  chromium=(chromium --user-data-dir="$scratch/chromium" --no-first-run
    --no-default-browser-check --disable-background-networking --disable-component-update
    --disable-sync --disable-quic --disable-gpu --password-store=basic
    '--window-position=20,20' '--window-size=640,600' --no-sandbox --test-type
    "http://localhost:$web_port/$1.html")
}

# clicks_link: clicks the link once it is there.  When it has changed its colour under the
# mouse, the page is ready to be clicked.
link_is_hovered() { (($(pixels "$hover_colour") > 1000)); }
clicks_link() {
  local width height left top
  (($(pixels "$link_colour") > 1000)) || return 0
  read -r width height left top < <(screenshot |
    convert xwd:- -fuzz 2% -fill black +opaque "$link_colour" -trim -format '%w %h %X %Y\n' info:)
  xdotool mousemove "$((left + width / 2))" "$((top + height / 2))"
  wait_for 5 link_is_hovered && xdotool click 1
}
