# SPDX-License-Identifier: MIT
# Sourced by viewers_test.sh: for each viewer the settings of a user who has asked it for
# all that a stranger's server may not have, and tests of such settings alone.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # the other scripts share $scratch, $viewer and the rest

# forget_settings: what a user has who has set nothing.
forget_settings() {
  find "$HOME" -mindepth 1 -delete
  xrdb -remove
  unset XENVIRONMENT RESOURCE_NAME
  if declare -F "no_settings_$viewer" >/dev/null; then
    "no_settings_$viewer"
  fi
}

settings_tigervnc() {
  mkdir -p "$HOME/.vnc" "$HOME/.config/tigervnc" # before version 1.14, and since
  tee "$HOME/.vnc/default.tigervnc" >"$HOME/.config/tigervnc/default.tigervnc" <<'END'
TigerVNC Configuration file Version 1.0

ServerName=elsewhere.example
FullScreen=1
FullScreenMode=All
FullScreenAllMonitors=1
FullscreenSystemKeys=1
SendClipboard=1
AcceptClipboard=1
SendPrimary=1
SetPrimary=1
Shared=0
ViewOnly=0
AutoSelect=0
QualityLevel=1
CompressLevel=1
SecurityTypes=None,VncAuth,Plain,TLSNone,TLSVnc,TLSPlain,X509None,X509Vnc,X509Plain
END
}

# What the user's X resources say, by the weakest and by the strongest names.
tightvnc_resources() {
  local name
  for name in '*' Vncviewer. Vncviewer.form.viewport.desktop. xtightvncviewer. \
    xtightvncviewer.form.viewport.desktop. xtightvncviewer.form. xtightvncviewer.form.viewport.; do
    printf '%s\n' "${name}fullScreen: True" "${name}grabKeyboard: True" \
      "${name}shareDesktop: False" "${name}viewOnly: False" "${name}raiseOnBeep: True" \
      "${name}passwordDialog: False" "${name}autoPass: True" "${name}qualityLevel: 1" \
      "${name}compressLevel: 1" "${name}useBGR233: False"
    [[ $name == '*' ]] || printf '%s\n' \
      "${name}translations: <Enter>: SelectionToVNC(always)\\n<Leave>: SelectionFromVNC(always)"
  done
  printf '%s\n' 'Vncviewer*desktop.baseTranslations: <KeyPress>: SelectionToVNC(always)' \
    'xtightvncviewer*desktop.baseTranslations: <KeyPress>: SelectionToVNC(always)'
}
settings_tightvnc() {
  tightvnc_resources | xrdb -nocpp -load
  tightvnc_resources >"$scratch/resources"
  export XENVIRONMENT=$scratch/resources RESOURCE_NAME=xtightvncviewer
}

settings_gvncviewer() { :; } # it reads none

# The one thing that no argument takes back.
test_tightvnc() {
  printf '%s\n' "$session_password" | tigervncpasswd -f >"$scratch/passwd"
  printf 'xtightvncviewer.passwordFile: %s\n' "$scratch/passwd" | xrdb -nocpp -load
  unguarded_or password 'no password of the X resources' keeps_session_password vnc "$viewer"
  xrdb -remove
}

settings_remmina() {
  viewer_title=127.0.0.1: # the address, not the server's title
  # What a new connection starts from: what was once saved as default.
  remmina_defaults viewmode=4 keyboard_grab=1 disableclipboard=0 viewonly=0
}
remmina_defaults() {
  mkdir -p "$HOME/.config/remmina"
  printf '%s\n' '[remmina_pref]' periodic_news_permitted=false \
    periodic_usage_stats_permitted=false '[remmina]' name=default protocol=VNC "$@" \
    >"$HOME/.config/remmina/remmina.pref"
}

# What its defaults do, as its unguarded says, and what no name of a host does.
test_remmina() {
  # It makes the secret for its passwords when it encrypts the first one.
  remmina_defaults
  printf '%s\n' "$session_password" | remmina --encrypt-password >"$scratch/encrypted" 2>&1 || true
  sed -i "/^name=/a password=$(sed -n 's/^Encrypted password: //p' "$scratch/encrypted")" \
    "$HOME/.config/remmina/remmina.pref"
  check 'the password of the default profile is given away, as its unguarded says' \
    answers vnc vnc_auth "$session_password" "$viewer"
  remmina_defaults "precommand=touch $scratch/command_ran"
  check 'the command of the default profile is run, as its unguarded says' in_session '' \
    command_ran "$viewer"
  forget_settings
  check 'a host is no file' remmina_opens_no_file
}
command_ran() { [[ -e $scratch/command_ran ]]; }

# A name that ends in .remmina, in a folder with a file of that name.
remmina_opens_no_file() {
  local folder=$scratch/profiles vector=() status=0 user
  start_server || return
  mkdir -p "$folder"
  for user in '' user; do
    printf '%s\n' '[remmina]' name=x protocol=VNC "server=127.0.0.1:$server_port" \
      "precommand=touch $scratch/harmed" >"$folder/${user:+$user@}localhost.remmina"
    mapfile -d '' vector < <(/usr/bin/python3 scripts/desktop/viewer_vector.py ${user:+--user "$user"} \
      "$viewer" vnc localhost.remmina)
    remmina_in "$folder" "${vector[@]}"
    sleep 6
    ! happened connect || status=1
  done
  end_viewers || status=1
  # What the test can see.
  start_server && remmina_in "$folder" remmina -c vnc://localhost.remmina &&
    wait_for 20 test -e "$scratch/harmed" || status=1
  rm -f "$scratch/harmed"
  end_viewers && return "$status"
}
remmina_in() {
  (cd "$1" && exec setsid "${@:2}") &
  viewers+=($!)
}

# Without the first line it asks whether its settings for the host are right.
settings_krdc() {
  viewer_title=KRDC
  mkdir -p "$HOME/.config"
  printf '%s\n' '[General]' ShowPreferencesForNewConnections=false \
    "${1:-FullscreenOnConnect=true}" >"$HOME/.config/krdcrc"
}
no_settings_krdc() { settings_krdc FullscreenOnConnect=false; }

settings_virt-viewer() {
  mkdir -p "$HOME/.config/virt-viewer"
  printf '%s\n' '[virt-viewer]' share-clipboard=true >"$HOME/.config/virt-viewer/settings"
}
