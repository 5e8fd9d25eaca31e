# SPDX-License-Identifier: MIT
# Sourced by the tests of VNC viewers after scratch_desktop.sh: starts a viewer as its file
# in viewers/ says, against the hostile server, and looks at what each of them got.
# shellcheck shell=bash
# shellcheck disable=SC2154 # scratch_desktop.sh sets $scratch

# What nobody else on this machine has said.
marked_text='MARKED-by-the-user'
copied_text='COPIED-by-the-user'
server_text='TEXT-of-the-server'
session_user='session-user'
session_password='sess-pwd'
desktop_colour='#7A1FA2' # the server's, unless it is told another

# --- The server ----------------------------------------------------------------

# start_server OPTION...: sets $server_port and $server_log.
start_server() {
  server_log=$scratch/server.json
  rm -f "$scratch/server_port"
  setsid /usr/bin/python3 tests/hostile_vnc.py --log "$server_log" \
    --port-file "$scratch/server_port" --time 90 "$@" >"$scratch/server.log" 2>&1 &
  server=$!
  wait_for 10 test -s "$scratch/server_port" || return
  server_port=$(cat "$scratch/server_port")
}

stop_server() {
  kill "$server" 2>/dev/null || true
  wait "$server" 2>/dev/null || true
}

# happened EVENT [TEXT]: the server wrote such a line, with the text in it.
happened() {
  local lines
  lines=$(grep -F "\"event\": \"$1\"" "$server_log") && [[ $lines == *"${2:-}"* ]]
}

# --- The viewer ----------------------------------------------------------------

# screen: its size and a picture of it.
screen_width=1100
screen_height=720
# pixels COLOUR [PART]: how many of the screen, or of a part of it, have nearly that colour.
pixels() {
  xwd -root -silent 2>/dev/null | convert xwd:- ${2:+-crop "$2" +repage} -fuzz 2% \
    -transparent "$1" -alpha extract -negate -precision 9 \
    -format '%[fx:round(mean*w*h)]' info: 2>/dev/null || printf 0
}

# window: the identifier of the viewer's window, by $viewer_title.
window() {
  wmctrl -l 2>/dev/null |
    awk -v title="$viewer_title" 'index($0, title) && !found++ { print $1 }'
}
has_window() { [[ -n $(window) ]]; }
no_windows() { [[ -z $(wmctrl -l 2>/dev/null | sed '/another window/d') ]]; }

# start_another_window: one that is no viewer's, in a corner.
start_another_window() {
  service xterm xterm -T 'another window' -geometry 12x3+2-2 -e sleep 100000
  ready xterm has_another_window
}
has_another_window() { [[ $(wmctrl -l 2>/dev/null) == *'another window'* ]]; }

# start_viewer VIEWER OPTION...: with the options of viewer_vector.py, on the server's port
# if they have none, and in a session that has secrets.
viewers=() # process groups
start_viewer() {
  local viewer=$1 vector=() options=("${@:2}")
  [[ " ${options[*]} " == *' --port '* ]] || options+=(--port "$server_port")
  [[ " ${options[*]} " == *' --host '* ]] || options+=(--host 127.0.0.1)
  local host words=() i
  for ((i = 0; i < ${#options[@]}; i++)); do
    if [[ ${options[i]} == --host ]]; then
      host=${options[++i]}
    else
      words+=("${options[i]}")
    fi
  done
  mapfile -d '' vector < <(/usr/bin/python3 scripts/desktop/viewer_vector.py "${words[@]}" \
    "$viewer" vnc "$host")
  ((${#vector[@]} > 1)) || return
  printf '%q ' "${vector[@]}" && printf '\n'
  VNC_USERNAME=$session_user VNC_PASSWORD=$session_password \
    VNC_VIA_CMD="touch $scratch/harmed" setsid "${vector[@]}" </dev/null &
  viewers+=($!)
}

# end_viewers: those that were started, and the server.
end_viewers() {
  local group
  for group in "${viewers[@]}"; do
    kill -- "-$group" 2>/dev/null || true
  done
  if ! wait_for 5 no_windows; then
    for group in "${viewers[@]}"; do
      kill -s KILL -- "-$group" 2>/dev/null || true
    done
    wait_for 10 no_windows || true
  fi
  ((${#viewers[@]} == 0)) || wait "${viewers[@]}" 2>/dev/null || true
  viewers=()
  stop_server
  ! [[ -e $scratch/harmed ]] || { printf 'a command was run\n' && return 1; }
}

# connected: the viewer shows the server's desktop.
connected() { happened encodings && has_window; }

# in_front: gives the viewer's window the keyboard, with the pointer in its middle.
in_front() {
  local left top width height
  wmctrl -ia "$(window)" || return
  read -r left top width height < <(place_of "$(window)")
  xdotool mousemove "$((left + width / 2))" "$((top + height / 2))"
}
# What is inside the window's frame.
place_of() {
  xwininfo -id "$1" | awk '/Absolute upper-left/ { print $4 } /Width:|Height:/ { print $2 }' | xargs
}

# another_in_front: gives the keyboard to another window, with the pointer outside both.
another_in_front() {
  xdotool mousemove 400 2
  wmctrl -ia "$(wmctrl -l | grep 'another window' | cut -d ' ' -f 1)"
}

# leaves_and_comes_back: what makes viewers hand over the clipboard.
leaves_and_comes_back() {
  another_in_front && sleep 0.3
  in_front && sleep 0.5
  xdotool key space && sleep 0.2
  xdotool mousemove_relative 5 5 && sleep 0.2
}

# marks TEXT, copies TEXT: as other programs do it.
marks() { printf '%s' "$1" | xsel --input --primary; }
copies() { printf '%s' "$1" | xsel --input --clipboard; }

# --- The checks: VIEWER OPTION... ----------------------------------------------

# in_session SERVER_OPTIONS CHECK VIEWER OPTION...: the check is run while the viewer of
# that name is connected to the server; all is ended after it.
in_session() {
  local server_options=() check=$2 status=0
  read -ra server_options <<<"$1"
  start_server "${server_options[@]}" && start_viewer "${@:3}" &&
    wait_for 15 connected && sleep 1 && "$check" || status=1
  end_viewers || status=1
  ((status == 0)) || grep -v '"pointer"' "$server_log" | tail -n 25
  return "$status"
}

# The window is one among others: in its frame, with its title on the screen.
is_ordinary() {
  local state frame left top width height
  state=$(xprop -id "$(window)" _NET_WM_STATE)
  frame=$(xprop -id "$(window)" _NET_FRAME_EXTENTS | grep -o '[0-9]*' | xargs)
  read -r left top width height < <(place_of "$(window)")
  printf '%s; frame %s; place %s %s %s %s\n' "$state" "$frame" "$left" "$top" "$width" "$height"
  [[ $state != *FULLSCREEN* && $state != *MAXIMIZED* && $state != *ABOVE* ]] || return
  local edges
  read -ra edges <<<"$frame"
  ((${edges[2]:-0} > 10 && top >= edges[2])) || has_own_title_bar "$left" "$top"
}
# has_own_title_bar LEFT TOP: the program draws it itself, where its window begins.
has_own_title_bar() {
  (($1 >= 0 && $2 >= 0)) && [[ $(xprop -id "$(window)" _MOTIF_WM_HINTS) == *'0x2, 0x0, 0x0,'* ]] &&
    (($(pixels "$desktop_colour" "200x20+$1+$2") == 0))
}
is_more_than_a_window() {
  xprop -id "$(window)" _NET_WM_STATE | grep -e FULLSCREEN -e MAXIMIZED
}
# The same of a small desktop, whose window is small as well.
is_small() {
  local width height
  is_ordinary || return
  read -r _ _ width height < <(place_of "$(window)")
  ((width < screen_width * 9 / 10 && height < screen_height * 9 / 10))
}

shows_desktop() { wait_for 10 covers 50000; }
covers() { (($(pixels "$desktop_colour") > $1)); }

# typed_keys: types into the window; the server knows whether it got an "x".
types() { in_front && sleep 0.5 && xdotool click 1 && sleep 0.5 && xdotool key x && sleep 0.5; }
arrives() { types && happened key '"key": 120' && happened pointer '"buttons": 1'; }
gets_keys() { wait_for 15 arrives; } # a busy machine takes its time
gets_no_keys() { types && ! happened key && ! happened pointer '"buttons": 1'; }

# keyboard_is_free, once the window has come to the front and the pointer is in it.
keyboard_is_free() {
  another_in_front && sleep 0.5 && in_front && sleep 1 && can_grab_keyboard
}

# stays_away: a window that was put away is not brought back by the server's bell.
stays_away() {
  local shown
  shown=$(window)
  xdotool windowminimize "$shown" && sleep 2 && [[ $(xprop -id "$shown" WM_STATE) == *Iconic* ]]
}

# Moves between windows, with old and new texts.
uses_clipboard() {
  xprop -root -remove CUT_BUFFER0
  marks "$marked_text" && copies "$copied_text" && leaves_and_comes_back &&
    marks "$marked_text" && copies "$copied_text" && leaves_and_comes_back && sleep 1
}
clipboard_stays() {
  uses_clipboard && another_in_front && sleep 0.5 || return
  printf 'now marked: %s, copied: %s\n' "$(xsel --output --primary)" "$(xsel --output --clipboard)"
  [[ $(xsel --output --primary) == "$marked_text" ]] || return
  [[ $(xsel --output --clipboard) == "$copied_text" ]] || return
  [[ $(xprop -root CUT_BUFFER0) != *"$server_text"* ]] || return
  ! grep -qF -e "$marked_text" -e "$copied_text" "$server_log" || return
  ! happened cut_text && ! happened extended '"action": "provide"'
}
clipboard_goes_out() {
  uses_clipboard || return
  grep -qF -e "$marked_text" -e "$copied_text" "$server_log"
}
clipboard_is_open() {
  uses_clipboard && another_in_front && sleep 0.5 || return
  grep -qF -e "$marked_text" -e "$copied_text" "$server_log" ||
    [[ $(xsel --output --clipboard) == "$server_text" ]]
}
clipboard_comes_in() {
  in_front && sleep 2 && another_in_front && sleep 1 || return
  printf 'now marked: %s, copied: %s\n' "$(xsel --output --primary)" "$(xsel --output --clipboard)"
  [[ $(xsel --output --primary) == "$server_text" ||
    $(xsel --output --clipboard) == "$server_text" ]]
}

# second_stays_with_first: another of the same viewer does not put out the first.
second_is_there() { (($(grep -c '"event": "encodings"' "$server_log") == 2)); }
second_stays_with_first() {
  start_viewer "$viewer" && wait_for 10 second_is_there && sleep 0.5 &&
    ! happened put_out && ! happened disconnect
}

# keeps_session_password TYPE VIEWER OPTION...: a server that asks that way gets nothing of
# the session.  It is enough that the viewer has seen the question: it
# answers, goes, or does neither for ten seconds.
has_reacted() { happened security || happened disconnect; }
has_seen_question() { wait_for 10 has_reacted || happened version; }
keeps_session_password() {
  local status=0
  start_server --security "$1" --certificate "$scratch/certificate.pem" \
    --passwords "$session_password" && start_viewer "${@:2}" && has_seen_question &&
    sleep 1.5 && ! happened vnc_auth && ! happened login &&
    ! grep -qF "$session_user" "$server_log" || status=1
  end_viewers || status=1
  ((status == 0)) || cat "$server_log"
  return "$status"
}

# answers TYPE EVENT TEXT VIEWER OPTION...: a server that asks that way gets this.
answers() {
  local status=0
  start_server --security "$1" --certificate "$scratch/certificate.pem" \
    --passwords "$session_password" link-pwd && start_viewer "${@:4}" &&
    wait_for 10 happened "$2" "$3" || status=1
  end_viewers || status=1
  ((status == 0)) || cat "$server_log"
  return "$status"
}

# sees EVENT TEXT SERVER_OPTIONS VIEWER OPTION...: the server gets this within ten seconds.
sees() {
  local status=0 server_options=()
  read -ra server_options <<<"$3"
  start_server "${server_options[@]}" && start_viewer "${@:4}" && wait_for 10 happened "$1" "$2" ||
    status=1
  end_viewers || status=1
  ((status == 0)) || cat "$server_log"
  return "$status"
}

# refuses_insecure VIEWER OPTION...: the server offers no security at all, and is left.
refuses_insecure() {
  local status=0
  start_server --security none && start_viewer "$@" && wait_for 10 happened disconnect &&
    ! happened client_init || status=1
  end_viewers || status=1
  ((status == 0)) || cat "$server_log"
  return "$status"
}
