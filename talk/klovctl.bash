# Completion of klovctl's command line in bash.
_klovctl() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      -p | -d | --timeout | --model | --drawer-open) i=$((i + 1)) ;;
      -*) ;;
      *) command=${COMP_WORDS[i]}; break ;;
    esac
  done
  COMPREPLY=()
  case $before in
    -p)
      mapfile -t COMPREPLY < <(compgen -W "$(lpstat -e 2>/dev/null)" -- "$word")
      return
      ;;
    -d | --ask)
      mapfile -t COMPREPLY < <(compgen -W "socket:// serial:" -- "$word"; compgen -f -- "$word")
      return
      ;;
    --drawer-open)
      mapfile -t COMPREPLY < <(compgen -W "high low" -- "$word")
      return
      ;;
  esac
  local words
  case $command in
    '') words="-p -d --timeout --help --version status identify test drawer cut feed beep reset logo send find" ;;
    status) words="--json --watch --drawer-open" ;;
    test) words="--model" ;;
    drawer) words="1 2" ;;
    cut) words="--full" ;;
    find) words="--ask" ;;
    logo)
      case $before in
        logo) words="list add print delete" ;;
        add | print | delete) words="1 2 3 4 5 6 7 8 9" ;;
        *)
          mapfile -t COMPREPLY < <(compgen -f -- "$word")
          return
          ;;
      esac
      ;;
    send)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    *) return ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _klovctl klovctl
