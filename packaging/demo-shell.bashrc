# shellcheck shell=bash
# The startup file of the shell that ./run opens.
PS1='ulotask demo \$ '
source "${BASH_SOURCE[0]%/*}/completions/ulotask.bash"
cat <<'HELP'

You are in a shell where `ulotask` works on the demonstration store. Try:
  ulotask add "Buy milk" --due "2026-12-24 18:00" --priority high
  ulotask list
  ulotask show 2
  ulotask edit 2 --status accepted --category garden
  ulotask done 2
  ulotask list --view incomplete
  ulotask export -o tasks.vcs
  ulotask --help
  ulo-tasks                  # the same list on your display
The TAB key completes verbs, options, UIDs and categories. Leave with `exit`.
HELP
