# bash completion for vorlu
_vorlu() {
  local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "--update --install --installProgress --check --report --init --version
      -u -i -ip -c -r -dk -v -h" -- "$word")
  elif ((COMP_CWORD == 2)); then
    case $option in
      --update | -u)
        mapfile -t COMPREPLY < <(compgen -W "check run force prompt testPrompt timerPrompt selfService self" -- "$word") ;;
      --report | -r) mapfile -t COMPREPLY < <(compgen -W "submit" -- "$word") ;;
    esac
  fi
}
complete -F _vorlu vorlu
