#compdef virtual-modem-inspect
# Completion for virtual-modem-inspect in bash, and in zsh by its functions for bash. The program
# itself tells commands, options and what they take (by its help), and names (by its lists).

# Reads the help of the program, or of one of its commands, into arrays of the caller.
_virtual_modem_inspect_help() {
  local line section=''
  commands=() options=() positionals=()
  while IFS= read -r line; do
    if [[ $line =~ ^([A-Z][a-z]*):$ ]]; then
      section=${BASH_REMATCH[1]}
    elif [[ $section == Subcommands && $line =~ ^'  '([a-z]+)' ' ]]; then
      commands+=("${BASH_REMATCH[1]}")
    elif [[ $section == Positionals && $line =~ ^'  '[a-z]+' '([^ ]+) ]]; then
      positionals+=("${BASH_REMATCH[1]}")
    elif [[ $section == Options && $line =~ ^'  '(-.,)?(--[a-z-]+)(' '([^ ]+))? ]]; then
      options+=("${BASH_REMATCH[2]}")
      takes[${BASH_REMATCH[2]}]=${BASH_REMATCH[4]%%*:} # after a flag may stand "Needs: --other"
    fi
  done < <("$program" "$@" --help 2>/dev/null)
}

# The names of each list; those in a package also without it.
_virtual_modem_inspect_names() {
  local list
  for list; do
    "$program" list "$list" 2>/dev/null
  done | sed -E 's/ .*//; s/^(([a-z]+[.])+)(.*)/\1\3\n\3/'
}

_virtual_modem_inspect() {
  local program=$1 current=$2 command='' word expects='' position=0 words='' before=''
  local -a commands options positionals
  local -A takes=()
  COMPREPLY=()
  [[ -z ${ZSH_VERSION-} ]] || setopt local_options bash_rematch
  _virtual_modem_inspect_help
  for word in "${COMP_WORDS[@]:1:$((COMP_CWORD - 1))}"; do
    if [[ $word == '=' ]]; then # of --option=value or FIELD=VALUE, which come as three words
      expects=${expects:-VALUE}
    elif [[ -n $expects ]]; then
      expects=''
    elif [[ $word == -* ]]; then
      expects=${takes[$word]-}
    elif [[ -z $command ]]; then
      command=$word
      _virtual_modem_inspect_help "$command"
    else
      ((++position))
    fi
  done
  if [[ $current == '=' ]]; then
    current='' expects=${expects:-VALUE}
  elif [[ $current == *?=* ]]; then # one word in zsh
    expects=${takes[${current%%=*}]-VALUE} before=${current%%=*}=
  fi

  if [[ -z $expects && $current == -* ]]; then
    words=${options[*]}
  elif [[ -z $expects && -z $command ]]; then
    words=${commands[*]}
  else
    expects=${expects:-${positionals[position]-}}
    case $expects in
      TYPE | '[TYPE]') words=$(_virtual_modem_inspect_names messages) ;;
      UNIT) words=$("$program" list 2>/dev/null | cut -d' ' -f3 | sort -u) ;;
      FIELD=VALUE) words=$(_virtual_modem_inspect_names fields | sed 's/.*[.]//' | sort -u) ;;
      VALUE) words=$(_virtual_modem_inspect_names values) ;;
      WORDS | NAME*)
        if [[ $current == *.* ]]; then
          words=$(_virtual_modem_inspect_names messages fields)
        else
          words=$(_virtual_modem_inspect_names messages enums values)
        fi
        ;;
      *'|'*) words=${expects//|/ } ;;
    esac
  fi
  while IFS= read -r word; do
    COMPREPLY+=("$word")
  done < <(compgen -P "$before" -W "$words" -- "${current#"$before"}")
}

# Where nothing fits, file names do.
[[ -z ${ZSH_VERSION-} ]] || { autoload -U +X bashcompinit && bashcompinit; }
complete -o default -F _virtual_modem_inspect virtual-modem-inspect
[[ -z ${ZSH_VERSION-} ]] || _bash_complete -o default -F _virtual_modem_inspect
