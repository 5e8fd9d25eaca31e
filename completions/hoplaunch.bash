# bash completion for hoplaunch and hopexplain                    -*- shell-script -*-

_hoplaunch() {
  # shellcheck disable=SC2034  # the library sets prev
  local cur prev words cword
  _init_completion -n =: || return

  # The option whose value is being typed, if any: behind its "=", or as the argument
  # behind it.
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

  local format=''
  if [[ ${words[0]##*/} == hopexplain ]]; then
    format='-format='
  fi
  case ${key,,} in
    '')
      if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$format"'
          -log= -program= -style= -portArg=
          -PROGRAMS= -VNC_OPTIONS= -URI_SCHEME= -dummy= -MaxShortName= -LogDateFormat=
          -LogTimeZone= -defaultLanguage=
          -refcount=1 -hoplaunch=1 -configDB=1 -reportThread=1 -reportStack=1' -- "$cur")
      else
        mapfile -t COMPREPLY < <(compgen -W 'vnc:// ssh://' -- "$cur")
        __ltrim_colon_completions "$cur"
      fi
      if [[ ${COMPREPLY[*]} == *[=/] ]]; then
        compopt -o nospace
      fi
      ;;
    -log) _filedir ;;
    -program)
      if [[ $cur == */* ]]; then
        _filedir
      else
        mapfile -t COMPREPLY < <(compgen -c -- "$cur")
      fi
      ;;
    -style) mapfile -t COMPREPLY < <(compgen -W 'equals separate' -- "$cur") ;;
    -format)
      if [[ -n $format ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur")
      fi
      ;;
  esac
} && complete -F _hoplaunch hoplaunch hopexplain
