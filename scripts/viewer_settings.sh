# Sourced by viewers_test.sh: for each viewer the settings of a user who has asked it for
# all that a stranger's server may not have, and tests of such settings alone.
# shellcheck shell=bash
# shellcheck disable=SC2154 # the other scripts set $scratch, $viewer and $session_password

# forget_settings: what a user has who has set nothing.
forget_settings() {
  find "$HOME" -mindepth 1 -delete
  xrdb -remove
  unset XENVIRONMENT RESOURCE_NAME
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
