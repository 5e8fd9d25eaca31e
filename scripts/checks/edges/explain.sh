# SPDX-License-Identifier: MIT
# hopexplain: output that is lost, the log, JSON in ASCII, and its own options.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

good=("-program=$seen" vnc://h/)
bad=("-program=$seen" vnc://h)

# Output that is lost.
for target in '>/dev/full' '>&-' '>&4'; do
  for format in text json; do
    for what in good bad; do
      declare -n line=$what
      alone bash broken "$target" "$explain" "-format=$format" "${line[@]}"
      same "a $what link in $format $target: the status" 2 "$status"
      same "a $what link in $format $target: one line on standard error" 1 "$(grep -c . <<<"$err")"
      same "a $what link in $format $target: no set is left" 0 "$sets"
    done
  done
  for option in --help --version; do
    alone bash broken "$target" "$explain" "$option"
    same "$option $target: the status" 2 "$status"
  done
  alone bash broken "$target" "$explain" -x
  same "no value $target: the status" 255 "$status"
  same "no value $target: standard error" 'Keyword -x has no value' "$err"
  alone bash broken "$target" "$explain" -format=xml vnc://h/
  same "an unknown format $target: the status" 255 "$status"
done
alone bash broken '2>&-' "$explain" "${good[@]}"
same 'standard error is closed: the status' 0 "$status"
alone bash broken '>/dev/full 2>&-' "$explain" "${good[@]}"
same 'both outputs are lost: the status' 2 "$status"
alone bash broken '2>/dev/full' "$explain" "${good[@]}"
same 'standard error is full: the status' 0 "$status"

# The log is looked at, and neither opened nor made.
# log_line NAME PATH TEXT: says TEXT of the log, "null" for nothing.
log_line() {
  alone "$explain" "-log=$2" "${good[@]}"
  same "log, $1: the status" 0 "$status"
  local text
  text=$(grep '^log' <<<"$out")
  if [[ $3 == null ]]; then
    if [[ -n $text ]]; then
      outcome "log, $1: no fault is said" "$([[ ! $text =~ (No|cannot|Is|would) ]]; echo $?)" "$text"
    fi
  else
    like "log, $1: the text" "^log.*$3" "$text"
  fi
  alone "$explain" -format=json "-log=$2" "${good[@]}"
  same "log, $1, JSON: the status" 0 "$status"
  if [[ $3 == null ]]; then
    same "log, $1, JSON: logError" null "$(json 'j["logError"]' out)"
  else
    like "log, $1, JSON: logError" "^\".*$3" "$(json 'j["logError"]' out)"
  fi
  same "log, $1, JSON: still a launch" true "$(json 'j["launches"]' out)"
}
printf 'before\n' >log
mkfifo fifo
mkdir folder
log_line 'a file' log null
same 'log, a file: as before' before "$(cat log)"
log_line 'a file that is missing' new.log null
true_that 'log, a file that is missing: is not made' test ! -e new.log
log_line 'a file in no folder' missing/log 'No such file or directory'
log_line 'a folder' folder 'Is a directory'
log_line 'below a file' log/log 'Not a directory'
log_line 'a name that is too long' "$(printf 'x%.0s' {1..256})" 'File name too long'
log_line 'a name of the greatest length' "$(printf 'x%.0s' {1..255})" null
ln -s circle circle
log_line 'a circle of links' circle 'Too many levels of symbolic links'
ln -s new.log link
log_line 'a link to a file that is missing' link null
true_that 'log, a link to a file that is missing: is not made' test ! -e new.log
log_line 'a FIFO without a reader' fifo .
exec 5<>fifo
log_line 'a FIFO with a reader' fifo .
exec 5>&-
"$python" -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket")'
log_line 'a socket' socket .
log_line 'the null device' /dev/null null
alone "$explain" "${good[@]}"
same 'no log: no line' '' "$(grep '^log' <<<"$out")"
alone "$explain" -format=json -log= "${good[@]}"
same 'an empty log: logError' null "$(json 'j["logError"]' out)"
alone "$explain" -format=json "${good[@]}"
same 'no log: logError' null "$(json 'j["logError"]' out)"
# shellcheck disable=SC2016  # the inner shell expands it
alone bash -c 'exec "$0" "$@" | cat' "$explain" -log=/dev/stdout -format=json "${good[@]}"
like 'the log is a pipe: logError' '^"' "$(json 'j["logError"]' out)"
if command -v setpriv >/dev/null; then
  printf 'x\n' >readonly.log
  chmod 444 readonly.log
  chmod 755 .
  alone setpriv --reuid=65534 --clear-groups "$explain" -format=json -log=readonly.log "${good[@]}"
  same 'a log that may not be written: logError' 1 "$(grep -c '"logError": ".*Permission denied' out)"
  alone setpriv --reuid=65534 --clear-groups "$explain" -format=json -log=new.log "${good[@]}"
  same 'a log in a folder that may not be written: logError' 1 \
    "$(grep -c '"logError": ".*Permission denied' out)"
fi

# JSON in ASCII.  \x in these texts is the byte itself.
# json_of NAME VALUE URI-IN-JSON ARGUMENT-IN-JSON BYTES
json_of() {
  local value
  value=$(printf '%b' "$2")
  alone "$explain" -format=json "-program=$seen" "vnc://h/?a=$value"
  same "JSON, $1: ASCII only" 0 "$(LC_ALL=C grep -c '[^ -~]' out)"
  like "JSON, $1: the URI" "\"uri\": \"vnc://h/[?]a=${3//\\/\\\\}\"" "${out,,}"
  like "JSON, $1: the argument" "\"-a=${4//\\/\\\\}\"" "${out,,}"
  same "JSON, $1: the bytes of the URI" "\"766e633a2f2f682f3f613d$5\"" "$(json 'j["uriBytes"]' out)"
  same "JSON, $1: the bytes of the arguments" \
    "[\"7365656e\", \"2d2d6175746f7265636f6e6e6563743d30\", \"2d613d$5\", \"68\"]" \
    "$(json 'j["argumentsBytes"]' out)"
}
json_of 'plain text' 'b~' 'b~' 'b~' 627e
json_of 'DEL' '\x7f' '\u007f' '\u007f' 7f
json_of 'U+0080' '\xc2\x80' '\u0080' '\u0080' c280
json_of 'U+00E9' '\xc3\xa9' '\u00e9' '\u00e9' c3a9
json_of 'U+07FF' '\xdf\xbf' '\u07ff' '\u07ff' dfbf
json_of 'U+0800' '\xe0\xa0\x80' '\u0800' '\u0800' e0a080
json_of 'U+2028' '\xe2\x80\xa8' '\u2028' '\u2028' e280a8
json_of 'U+D7FF' '\xed\x9f\xbf' '\ud7ff' '\ud7ff' ed9fbf
json_of 'U+FFFF' '\xef\xbf\xbf' '\uffff' '\uffff' efbfbf
json_of 'U+10000' '\xf0\x90\x80\x80' '\ud800\udc00' '\ud800\udc00' f0908080
json_of 'U+1F600' '\xf0\x9f\x98\x80' '\ud83d\ude00' '\ud83d\ude00' f09f9880
json_of 'U+10FFFF' '\xf4\x8f\xbf\xbf' '\udbff\udfff' '\udbff\udfff' f48fbfbf
r='\ufffd'
json_of 'beyond U+10FFFF' '\xf4\x90\x80\x80' "$r$r$r$r" "$r$r$r$r" f4908080
json_of 'FF' '\xff' "$r" "$r" ff
json_of 'a lone continuation' 'b\x80b' "b${r}b" "b${r}b" 628062
json_of 'a cut sequence' '\xe2\x82' "$r$r" "$r$r" e282
json_of 'a cut sequence and a letter' '\xe2\x82b' "$r${r}b" "$r${r}b" e28262
json_of 'an overlong slash' '\xc0\xaf' "$r$r" "$r$r" c0af
json_of 'an overlong of three' '\xe0\x9f\xbf' "$r$r$r" "$r$r$r" e09fbf
json_of 'an overlong of four' '\xf0\x8f\xbf\xbf' "$r$r$r$r" "$r$r$r$r" f08fbfbf
json_of 'a surrogate' '\xed\xa0\x80' "$r$r$r" "$r$r$r" eda080
json_of 'U+FFFD itself' '\xef\xbf\xbd' "$r" "$r" efbfbd
alone "$explain" -format=json $'vnc://h\xff'
same 'JSON, a bad link: the bytes' '["766e633a2f2f68ff", null, null]' \
  "$(json '[j["uriBytes"], j["arguments"], j["argumentsBytes"]]' out)"
alone "$explain" -format=json "-program=$seen" 'vnc://h/?a=%FF'
same 'JSON, an escape: the bytes of both' '["766e633a2f2f682f3f613d254646", "2d613dff"]' \
  "$(json '[j["uriBytes"], j["argumentsBytes"][2]]' out)"
alone "$explain" -format=json "-program=$seen" $'-log=\xc3\xa9\xff' $'-x\xe9=\xf0\x9f\x98\x80' $'vnc://\xe9/?\xff=1'
same 'JSON, bytes everywhere: ASCII only' 0 "$(LC_ALL=C grep -c '[^ -~]' out)"
same 'JSON, bytes everywhere: the log' '"\u00e9\ufffd"' "$(json 'j["log"]' out)"
same 'JSON, bytes everywhere: the option' 1 "$(grep -ic '"key": "x\\ufffd", "value": "\\ud83d\\ude00"' out)"

# Its own options.
version=$(grep -m 1 -oP '^ *(project\(hoplaunch +)?VERSION +\K[0-9.]+' "$top/CMakeLists.txt")
alone "$explain" --help
same '--help: the status' 0 "$status"
like '--help: what is printed' '-format' "$out"
same '--help: standard error' '' "$err"
alone "$explain" --version
same '--version: the status' 0 "$status"
like '--version: what is printed' "${version:-unknown}" "$out"
same '--version: standard error' '' "$err"
for option in --help --version; do
  alone "$explain" "$option" vnc://h/
  same "$option and a link: the link is its value" 1 "$status"
  like "$option and a link: the usage line" '^Usage: ' "$err"
  alone "$explain" "$option=1" "${good[@]}"
  same "$option with a value: an option that is ignored" 0 "$status"
  alone "$explain" vnc://h/ "$option"
  same "$option after a link: has no value" "255 Keyword $option has no value" "$status $err"
  alone "$launch" "$option"
  same "$option for the launcher: has no value" "255 Keyword $option has no value" "$status $err"
done
alone "$explain" -help
same '-help: has no value' "255 Keyword -help has no value" "$status $err"
for format in xml jso 'json ' 'texts' 1; do
  alone "$explain" "-format=$format" "${good[@]}"
  same "-format=$format: the status" 255 "$status"
  same "-format=$format: nothing on standard output" '' "$out"
  same "-format=$format: one line on standard error" 1 "$(grep -c . <<<"$err")"
done
alone "$explain" -FORMAT yaml "${good[@]}"
same '-FORMAT yaml: the status' 255 "$status"
for format in '' text TEXT Text; do
  alone "$explain" "-format=$format" "${good[@]}"
  same "-format=$format: the status" 0 "$status"
  like "-format=$format: text" '^URI  ' "$out"
  same "-format=$format: standard error" '' "$err"
done
for format in json JSON Json; do
  alone "$explain" "-format=$format" "${good[@]}"
  same "-format=$format: JSON" '"vnc://h/"' "$(json 'j["uri"]' out)"
done
alone "$explain" -format=json
like '-format=json and no link: the usage line' '^Usage: ' "$err"
same '-format=json and no link: the status' 1 "$status"
same '-format=json and no link: standard output' '' "$out"
rm -rf fifo folder log circle link socket readonly.log
