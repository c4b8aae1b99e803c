# Completion for virtual-modem-inspect. The program itself tells commands, options and types.

_virtual_modem_inspect() {
  local program=$1 current=$2 command='' word options words position=0
  COMPREPLY=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      --*) ;;
      *) ((++position == 1)) && command=$word ;;
    esac
  done

  case $3 in
    --from | --to) words='auto binary hex base64' ;;
    --schema) ;;
    *)
      if [[ $current == -* ]]; then
        options=$("$program" ${command:+"$command"} --help 2>/dev/null)
        words=$(grep -o -e '--[a-z]*' <<<"$options")
      elif [[ -z $command ]]; then
        words=$("$program" --help 2>/dev/null | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p')
      elif ((position == 1)); then
        case $command in
          decode | encode | diff) words=$("$program" list 2>/dev/null | cut -d' ' -f1) ;;
          describe) words=$({ "$program" list; "$program" list enums; } 2>/dev/null | cut -d' ' -f1) ;;
          list) words='messages enums' ;;
        esac
      fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "${words-}" -- "$current")
}

# Where nothing fits, file names do.
complete -o default -F _virtual_modem_inspect virtual-modem-inspect
