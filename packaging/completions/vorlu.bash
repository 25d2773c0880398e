# bash completion for vorlu and vorluctl

# _vorlu_offer WORD CHOICE…: the choices that begin with the word; for bash 3.2, too, which a Mac comes with.
_vorlu_offer() {
  local word=$1 choice
  shift
  for choice in "$@"; do
    if [[ $choice == "$word"* ]]; then COMPREPLY+=("$choice"); fi
  done
}

# Identifiers of the local catalog. Only root can read it.
_vorlu_identifiers() {
  local catalog="/Library/Application Support/MOSK/Vorlu/Run/offlineData.json" identifier
  [[ -r $catalog ]] || return 0
  while IFS= read -r identifier; do
    _vorlu_offer "$1" "$identifier"
  done < <(grep -o '"appIdentifier":"[^"]*"' "$catalog" | cut -d '"' -f 4)
}

_vorlu() {
  local word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _vorlu_offer "$word" --update --install --installProgress --check --report --init --version \
      -u -i -ip -c -r -dk -v -h
  elif ((COMP_CWORD == 2)); then
    case ${COMP_WORDS[1]} in
      --update | -u) _vorlu_offer "$word" check run force prompt testPrompt timerPrompt selfService self ;;
      --report | -r) _vorlu_offer "$word" submit ;;
      --install | -i | --installProgress | -ip | --check | -c) _vorlu_identifiers "$word" ;;
    esac
  fi
}

_vorluctl() {
  local word=${COMP_WORDS[COMP_CWORD]} last=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _vorlu_offer "$word" lint-catalog lint-prefs explain timeline status version help
    return
  fi
  case ${COMP_WORDS[1]} in
    lint-catalog | lint-prefs | status) [[ $word != -* ]] || _vorlu_offer "$word" --json ;;
    explain)
      if [[ $word == -* ]]; then
        _vorlu_offer "$word" --json --run-scripts
      else
        _vorlu_identifiers "$word"
      fi
      ;;
    timeline)
      case $last in
        --prefs | --days | --answers | --start | --hours | --release-every) ;;
        *) _vorlu_offer "$word" --prefs --days --answers --start --hours --release-every --json ;;
      esac
      ;;
  esac
}

complete -F _vorlu vorlu
complete -o default -F _vorluctl vorluctl
