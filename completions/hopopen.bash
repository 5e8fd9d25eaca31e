# SPDX-License-Identifier: MIT
# bash completion for hopopen                                     -*- shell-script -*-

# What hopopen knows: names of viewers, and schemes.  Neither has a character that means
# anything to the shell, and no other text of the list can look like one of them, as its
# quotes have a backslash in front.
_hopopen_viewers() {
  command hopopen --list --format=json 2>/dev/null |
    grep -oE '\{"name":"[a-z0-9-]+"' | sed 's/.*:"//; s/"$//'
}
_hopopen_schemes() {
  command hopopen --list --format=json 2>/dev/null |
    grep -oE '"schemes":\[[^]]*\]' | sed 's/^"schemes"://' | grep -oE '[a-z][a-z0-9+.-]*' | sort -u
}

# Files, but no pieces of a name with a line feed.
_hopopen_files() {
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

_hopopen() {
  # shellcheck disable=SC2034  # the library sets prev
  local cur prev words cword
  _init_completion -n =: || return

  # The option whose value is being typed, if any, and how many it has already.
  local option='' count=0 word
  for word in "${words[@]:1:cword-1}"; do
    case $option in
      --) ;;
      --viewer | --format | --log | --for) option='' ;;
      *)
        case $word in
          -- | --viewer | --format | --log | --use | --forget | --for | --trust | --distrust)
            option=$word
            count=0
            ;;
          --use=* | --forget=* | --trust=* | --distrust=*)
            option=${word%%=*}
            count=1
            ;;
          -*) option='' ;;
          *) count=$((count + 1)) ;;
        esac
        ;;
    esac
  done
  if [[ $option != -- && $cur == --*=* ]]; then
    option=${cur%%=*}
    cur=${cur#*=}
    count=0
  elif [[ $option != @(--|--viewer|--format|--log|--for) && $cur == -* ]]; then
    option=options
  fi

  case $option in
    options)
      mapfile -t COMPREPLY < <(compgen -W '--viewer= --dry-run --format= --log= --quiet
        --list --check --use --forget --for= --trust --distrust --version --help' -- "$cur")
      ;;
    --viewer) mapfile -t COMPREPLY < <(compgen -W "$(_hopopen_viewers)" -- "$cur") ;;
    --use)
      if ((count == 0)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_hopopen_viewers)" -- "$cur")
      else
        mapfile -t COMPREPLY < <(compgen -W "$(_hopopen_schemes)" -- "$cur")
      fi
      ;;
    --forget) mapfile -t COMPREPLY < <(compgen -W "$(_hopopen_schemes)" -- "$cur") ;;
    --for | --trust | --distrust) ;;
    --format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    --log) _hopopen_files ;;
    *)
      mapfile -t COMPREPLY < <(compgen -S :// -W "$(_hopopen_schemes)" -- "$cur")
      __ltrim_colon_completions "$cur"
      ;;
  esac
  if [[ ${COMPREPLY[*]} == *[=/] ]]; then
    compopt -o nospace
  fi
} && complete -F _hopopen hopopen
