# shellcheck shell=bash
# bash completion for ulotask. The candidates come from the program itself.

# Sets `unquoted` to a word of the command line without its quotes.
_ulotask_unquote() {
  unquoted=$1
  case $1 in
    \"*) unquoted=${unquoted#\"} unquoted=${unquoted%\"} ;;
    \'*) unquoted=${unquoted#\'} unquoted=${unquoted%\'} ;;
  esac
  [[ $1 == \'* ]] || unquoted=${unquoted//\\/}
}

# Sets `quoted` to a value in the form required after the opening quote of `word`, if it has one.
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
  # bash treats an equals sign as a separate word.
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
      # File names are completed by readline.
      compopt -o default -o filenames 2>/dev/null
      continue
    fi
    _ulotask_quote "$value" "$word"
    values+=("$quoted")
    meanings+=("$meaning")
  done < <("$1" __complete "${words[@]}" 2>/dev/null)

  # If there are several candidates, shows their meanings. These are never inserted because the
  # values before them differ. A menu, however, inserts what it shows.
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
