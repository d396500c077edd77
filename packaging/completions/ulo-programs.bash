# shellcheck shell=bash
# bash completion for ulo-tasks and ulo-action. The options come from the program's help; file names
# are completed by readline.

_ulo_program() {
  COMPREPLY=()
  local word=${COMP_WORDS[COMP_CWORD]} option
  if [[ $word == -* ]]; then
    while IFS= read -r option; do
      [[ $option == "$word"* ]] && COMPREPLY+=("$option")
    done < <("$1" --help 2>/dev/null | sed -n 's/^  \(-.,\)\{0,1\}\(--[a-z-]*\) .*/\2/p')
  elif [[ ${1##*/} == ulo-action && $COMP_CWORD == 1 ]]; then
    for option in TASK_SAVE TASK_VIEW; do
      [[ $option == "$word"* ]] && COMPREPLY+=("$option")
    done
  else
    compopt -o default -o filenames 2>/dev/null
  fi
}

complete -F _ulo_program ulo-tasks ulo-action
