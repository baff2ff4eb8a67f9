# Completion of trunnion's commands, options and files, from what the program itself says of them.

_trunnion()
{
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} program=${COMP_WORDS[0]}
  local commands command='' candidate
  COMPREPLY=()
  commands=$("$program" --help 2>/dev/null | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
  for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if grep -qxF -- "$candidate" <<<"$commands"; then
      command=$candidate
      break
    fi
  done

  case $previous in
    --dialect) mapfile -t COMPREPLY < <(compgen -W 'inverse-time per-minute tcp' -- "$word") ;;
    --format) mapfile -t COMPREPLY < <(compgen -W 'apt csv nc' -- "$word") ;;
    --start) mapfile -t COMPREPLY < <(compgen -W 'home free' -- "$word") ;;
    --rewind | --branch-change) mapfile -t COMPREPLY < <(compgen -W 'rapids retract' -- "$word") ;;
    --tool-roll) mapfile -t COMPREPLY < <(compgen -W 'fixed feed search open' -- "$word") ;;
  esac
  [ ${#COMPREPLY[@]} -eq 0 ] || return 0

  if [[ $word == -* ]]; then
    # shellcheck disable=SC2086 # no command: the program's own options
    mapfile -t COMPREPLY < <(compgen -W "$("$program" $command --help 2>/dev/null |
      sed -n '/^Options:/,/^$/p' | grep -oE '^  -[^ ]+' | tr -d ' ' | tr , '\n')" -- "$word")
  elif [ -z "$command" ]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _trunnion trunnion
