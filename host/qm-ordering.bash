# Completion of qm-ordering(1) for bash. The commands, their options, and what these take are read from the program's
# own help, so none of them is named here. A FILE, a FOLDER and a KEY of the settings are completed, too.

# Reads the help of a command into the caller's variables: its commands, its arguments, and what each option takes
# (nothing, for a flag).
__qm_ordering_read_help() {
  local line section= option
  commands=() arguments=()
  while IFS= read -r line; do
    case $line in
      '') section= ;;
      Options: | Positionals: | Subcommands:) section=$line ;;
      '  '[^\ ]*)
        [[ $line =~ ^\ \ ([^ ]+)(\ ([A-Z]+))? ]]
        case $section in
          Subcommands:) commands+=("${BASH_REMATCH[1]}") ;;
          Positionals:) arguments+=("${BASH_REMATCH[1]}") ;;
          Options:) for option in ${BASH_REMATCH[1]//,/ }; do takes[$option]=${BASH_REMATCH[3]-}; done ;;
        esac
        ;;
    esac
  done < <("$@" --help 2>/dev/null)
}

_qm_ordering() {
  local cur prev words cword split commands arguments word i kind= only_arguments= given=0
  local -A takes=()
  local -a path=("$1")
  _init_completion -s || return

  # Along the words before this one, to the command that they name.
  __qm_ordering_read_help "${path[@]}"
  for ((i = 1; i < cword; i++)); do
    word=${words[i]}
    if [[ $word == -- ]]; then
      only_arguments=1
    elif [[ $word == -* && ! $only_arguments ]]; then
      [[ ! ${takes[$word]-} ]] || ((++i))
    elif [[ " ${commands[*]} " == *" $word "* ]]; then
      path+=("$word")
      __qm_ordering_read_help "${path[@]}"
    else
      ((++given))
    fi
  done

  if [[ ! $only_arguments && ${takes[$prev]-} ]]; then
    kind=${takes[$prev]}
  elif $split; then
    return
  elif [[ ! $only_arguments && $cur == -* ]]; then
    COMPREPLY=($(compgen -W "${!takes[*]}" -- "$cur"))
    return
  elif ((${#commands[@]})); then
    COMPREPLY=($(compgen -W "${commands[*]}" -- "$cur"))
    return
  else
    kind=${arguments[given]-}
  fi
  case $kind in
    FILE) _filedir ;;
    FOLDER) _filedir -d ;;
    KEY) COMPREPLY=($(compgen -W "$("$1" settings list --all 2>/dev/null | sed '1,2d; s/ .*//')" -- "$cur")) ;;
  esac
} && complete -F _qm_ordering qm-ordering
