# SPDX-License-Identifier: MIT
# bash completion for hoplaunch and hopexplain                    -*- shell-script -*-

# Sets plain to the typed text as the shell will read it, and quote to the quote that is
# still open.  Fails where that depends on an expansion, which is left alone.
_hoplaunch_plain() {
  local typed=$1 c i
  plain='' quote=''
  for ((i = 0; i < ${#typed}; i++)); do
    c=${typed:i:1}
    case $quote$c in
      "''" | '""') quote='' ;;
      \' | \") quote=$c ;;
      \'?) plain+=$c ;;
      \\ | \"\\)
        i=$((i + 1))
        plain+=${typed:i:1}
        ;;
      [\$\`] | \"[\$\`]) return 1 ;;
      *) plain+=$c ;;
    esac
  done
}

# The programs on PATH that begin with what was typed, quoted.  Nothing else would do that:
# readline quotes the names of files only, and not all of them.  Inside of quotes there are
# but plain names; one with a control character would not fit on the line.
_hoplaunch_programs() {
  local plain quote folder file name front reset
  local -a folders
  _hoplaunch_plain "$cur" || return
  # What readline takes for earlier words stays on the line.
  front=${cur%"${cur##*[=:]}"}
  reset=$(shopt -p nullglob failglob)
  shopt -s nullglob
  shopt -u failglob
  IFS=: read -r -d '' -a folders < <(printf '%s:\0' "$PATH")
  for folder in "${folders[@]}"; do
    for file in "${folder:-.}/$plain"*; do
      name=${file##*/}
      if [[ ! -f $file || ! -x $file || $name == *[[:cntrl:]]* ]]; then
        continue
      fi
      if [[ -z $quote ]]; then
        printf -v name %q "$name"
      elif [[ $name == *[!A-Za-z0-9._+-]* ]]; then
        continue
      fi
      COMPREPLY+=("${name#"$front"}")
    done
  done
  eval "$reset"
}

# Files, but no pieces of a name with a line feed.
_hoplaunch_files() {
  local file
  local -a found
  _filedir
  for file in "${COMPREPLY[@]}"; do
    if [[ $file == \~* || -e $file || -L $file ]]; then
      found+=("$file")
    fi
  done
  COMPREPLY=("${found[@]}")
}

# Keys that begin with what was typed, or do so except for the case of letters, in which the
# typed ones stay: $1 those that count in any case, $2 the others.
_hoplaunch_keys() {
  local key
  mapfile -t COMPREPLY < <(compgen -W "$1 $2" -- "$cur")
  if ((${#COMPREPLY[@]} == 0)); then
    for key in $1; do
      if [[ ${key,,} == "${cur,,}"* ]]; then
        COMPREPLY+=("$cur${key:${#cur}}")
      fi
    done
  fi
}

_hoplaunch() {
  # shellcheck disable=SC2034  # the library sets prev
  local cur prev words cword
  _init_completion -n =: || return

  # The option whose value is being typed, if any: after its "=", or as the argument
  # after it.
  local key='' word
  for word in "${words[@]:1:cword-1}"; do
    if [[ -n $key || $word != -* || $word == *=* ]]; then
      key=''
    else
      key=$word
    fi
  done
  if [[ -z $key && $cur == -*=* ]]; then
    key=${cur%%=*}
    cur=${cur#*=}
  fi

  # list of docs/items.tsv: bash
  local keys='-log= -program= -style= -portArg= -PROGRAMS= -VNC_OPTIONS= -URI_SCHEME= -dummy=
    -MaxShortName= -LogDateFormat= -LogTimeZone= -defaultLanguage='
  local flags='-refcount=1 -hoplaunch=1 -configDB=1 -reportThread=1 -reportStack=1'
  # end of list
  local explains=''
  if [[ ${words[0]##*/} == hopexplain ]]; then
    explains=yes
    keys+=' -format='
    if ((cword == 1)); then
      flags+=' --help --version'
    fi
  fi
  case ${key,,} in
    '')
      if [[ $cur == -* ]]; then
        _hoplaunch_keys "$keys" "$flags"
      else
        mapfile -t COMPREPLY < <(compgen -W 'vnc:// ssh://' -- "$cur")
        __ltrim_colon_completions "$cur"
      fi
      if [[ ${COMPREPLY[*]} == *[=/] ]]; then
        compopt -o nospace
      fi
      ;;
    -log) _hoplaunch_files ;;
    -program)
      if [[ $cur == */* ]]; then
        _hoplaunch_files
      else
        _hoplaunch_programs
      fi
      ;;
    -style) mapfile -t COMPREPLY < <(compgen -W 'equals separate' -- "$cur") ;;
    -format)
      if [[ -n $explains ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur")
      fi
      ;;
  esac
} && complete -F _hoplaunch hoplaunch hopexplain
