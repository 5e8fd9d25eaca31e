# SPDX-License-Identifier: MIT
# The wrappers that are examples take an address and nothing else.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

mkdir wrapped
for program in x-terminal-emulator xdg-terminal-exec remmina vncviewer ssh; do
  cat >"wrapped/$program" <<'END'
#!/bin/sh
printf '<%s>' "${0##*/}" "$@"
echo
END
  chmod +x "wrapped/$program"
done

# wrapper NAME ARGUMENTS...
wrapper() {
  alone env "PATH=$scratch/wrapped:/usr/bin:/bin" "$top/desktop/$1" "${@:2}"
}

# takes WRAPPER ADDRESS EXPRESSION: starts something whose arguments fit.
takes() {
  wrapper "$1" -some=option --via x "$2"
  same "$1 $2: the status" 0 "$status"
  like "$1 $2: what is started" "$3" "$out"
  same "$1 $2: nothing on standard error" '' "$err"
}

# refuses WRAPPER ARGUMENTS...
refuses() {
  wrapper "$@"
  local what
  what=$(printf ' %.40q' "$@")
  same "refused$what: the status" 1 "$status"
  same "refused$what: nothing is started" '' "$out"
  same "refused$what: one line" 1 "$(grep -c '' <err)"
}

for port in 1 22 65535; do
  takes ssh-in-terminal "host:$port" "<ssh><-p><$port><--><host>\$"
  takes ssh-in-terminal "me@host:$port" "<ssh><-p><$port><--><me@host>\$"
  takes ssh-in-terminal "[::1]:$port" "<ssh><-p><$port><--><::1>\$"
  takes ssh-in-terminal "me@[fe80::1:2]:$port" "<ssh><-p><$port><--><me@fe80::1:2>\$"
  takes vnc-in-remmina "host:$port" "^<remmina><--connect=vnc://host:$port\?>\$"
  takes vnc-in-remmina "[::1]:$port" "^<remmina><--connect=vnc://\[::1\]:$port\?>\$"
  takes vnc-address-only "host:$port" "^<vncviewer>.*<host::?$port>\$"
  takes vnc-address-only "[::1]:$port" "^<vncviewer>.*<\[::1\]::?$port>\$"
done
takes ssh-in-terminal host.example.org '<ssh><--><host.example.org>$'
takes ssh-in-terminal me@host '<ssh><--><me@host>$'
takes ssh-in-terminal '[::1]' '<ssh><--><::1>$'
takes ssh-in-terminal 'me@[::1]' '<ssh><--><me@::1>$'
takes ssh-in-terminal 192.0.2.1 '<ssh><--><192.0.2.1>$'
takes vnc-in-remmina host '^<remmina><--connect=vnc://host\?>$'
takes vnc-in-remmina '[2001:db8::1]' '^<remmina><--connect=vnc://\[2001:db8::1\]\?>$'
takes vnc-address-only host '^<vncviewer>.*<host>$'
takes vnc-address-only '[2001:db8::1]' '^<vncviewer>.*<\[2001:db8::1\]>$'

for name in ssh-in-terminal vnc-in-remmina vnc-address-only; do
  refuses "$name"
  # shellcheck disable=SC2016  # no shell is to expand them
  for address in '' - -h --via=x -oProxyCommand=x host: host:0 host:00 host:65536 host:99999 \
    host:18446744073709551638 host:4294967318 host:-1 host:+1 'host: 1' 'host:1 ' host:1x host:0x16 \
    host::1 host:1:2 :22 '[]' '[]:22' '[::1' '::1]' '::1' '[::1]22' '[::1]:' '[::1]:0' '[::1]:65536' \
    '[::1]:x' '[::1]]' '[[::1]]' '[host]' '[::1]:1:2' '[-h]' 'host ' ' host' 'ho st' $'host\n' \
    $'host\n:22' $'host:22\n' $'a\nhost' 'ho;st' 'host;id' "ho'st" 'ho"st' 'ho$st' 'ho`st' 'ho/st' \
    'host/' 'host?a=b' 'host#a' 'ho\st' 'ho%st' 'höst' '@host' 'host@' 'a@b@host' '-a@host' \
    'me:secret@host' 'me:@host' ':secret@host' 'm e@host' 'me@-h' 'me@' '*' '~' 'a,b' 'a+b' 'a|b'; do
    refuses "$name" vnc://host "$address"
  done
done
for name in vnc-in-remmina vnc-address-only; do
  refuses "$name" me@host
  refuses "$name" 'me@[::1]:22'
done
