# shellcheck shell=bash
# The shell that ./run leaves the user in.
PS1='ulotask demo \$ '
cat <<'HELP'

You are in a shell where `ulotask` works on the demonstration store. Try:
  ulotask add "Buy milk" --due "2026-12-24 18:00" --priority high
  ulotask list
  ulotask show 2
  ulotask done 2
  ulotask export -o tasks.vcs
  ulotask --help
Leave with `exit`.
HELP
