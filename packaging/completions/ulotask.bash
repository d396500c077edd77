# shellcheck shell=bash
# Completion of ulotask's command line for bash. What fits is asked of the program itself.

# Sets `unquoted` to a word of the command line without its quoting.
_ulotask_unquote() {
  unquoted=$1
  case $1 in
    \"*) unquoted=${unquoted#\"} unquoted=${unquoted%\"} ;;
    \'*) unquoted=${unquoted#\'} unquoted=${unquoted%\'} ;;
  esac
  [[ $1 == \'* ]] || unquoted=${unquoted//\\/}
}

# Sets `quoted` to a value as it has to stand behind the opening quote of `word`, if there is one.
_ulotask_quote() {
  local value=$1 word=$2
  case $word in
    \"*)
      quoted=${value//\\/\\\\}
      quoted=${quoted//\"/\\\"}
      quoted=${quoted//\$/\\\$}
      quoted=${quoted//\`/\\\`}
      ;;
    \'*) quoted=${value//\'/\'\\\'\'} ;;
    *) printf -v quoted %q "$value" ;;
  esac
}

_ulotask() {
  COMPREPLY=()
  compopt -o nosort 2>/dev/null
  # An equals sign is a word of its own to bash.
  local -a words=()
  local word unquoted quoted
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $word == = ]] && continue
    _ulotask_unquote "$word"
    words+=("$unquoted")
  done
  word=${COMP_WORDS[COMP_CWORD]}
  [[ $word == = ]] && word=
  _ulotask_unquote "$word"
  words+=("$unquoted")

  local value meaning
  local -a values=() meanings=()
  while IFS= read -r line; do
    value=${line%%$'\t'*}
    meaning=${line#*$'\t'}
    if [[ -z $value ]]; then
      # Names of files fit: readline's own completion knows them.
      compopt -o default -o filenames 2>/dev/null
      continue
    fi
    _ulotask_quote "$value" "$word"
    values+=("$quoted")
    meanings+=("$meaning")
  done < <("$1" __complete "${words[@]}" 2>/dev/null)

  # Among several the meanings are shown; they are never inserted, for the values differ before
  # them. A menu inserts what it shows.
  local i
  for i in "${!values[@]}"; do
    if ((${#values[@]} > 1)) && [[ -n ${meanings[i]} && ${COMP_TYPE-} != 37 && ${COMP_TYPE-} != 42 ]]; then
      COMPREPLY+=("${values[i]}  (${meanings[i]})")
    else
      COMPREPLY+=("${values[i]}")
    fi
  done
}

complete -F _ulotask ulotask
