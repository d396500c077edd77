# Makes and removes Debian systems with only the essential packages and apt, in which commands run
# with an empty environment. Sourced by tools/fresh-root and tools/cross-test; requires root.
#
# Sets `repository`, `root` (the new system) and `clone` (the project's directory in it).

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=tools/$(basename "$0")
clone=/src/ulotaskengine

die() {
  echo "$program: $*" >&2
  exit 1
}

# Exits unless this machine can make systems of Debian's `suite`. Sets `revision` to the commit that
# `commit` names, and `sources` to the lines of the new system's sources, as "URI suite component".
checkMachine() {
  local suite=$1 commit=$2
  ((EUID == 0)) || die "needs root, to make device files and to change the root directory"
  command -v apt-get >/dev/null || die "needs a Debian machine: there is no apt-get"
  command -v git >/dev/null || die "needs git"
  revision=$(git -C "$repository" rev-parse --verify --quiet "$commit^{commit}") ||
    die "unknown commit: $commit"
  unshare --mount --pid --fork true 2>/dev/null ||
    die "needs the right to mount file systems; a container must be started with it"
  if ! command -v debootstrap >/dev/null; then
    apt-get -q update
    DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends install \
      debootstrap debian-archive-keyring
  fi

  local targets own
  targets=$(apt-get indextargets --no-release-info \
    --format '$(REPO_URI)|$(RELEASE)|$(COMPONENT)' 'Created-By: Packages' |
    awk -F '|' '$3 == "main" && !seen[$1 $2]++')
  sources=$(awk -F '|' -v suite="$suite" \
    '$2 ~ "^" suite "(-updates|-security)?$" { print $1, $2, $3 }' <<<"$targets")
  # A suite that this machine doesn't use comes from the mirror of its own.
  own=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
  [[ -n $sources ]] || sources=$(awk -F '|' -v suite="$suite" -v own="$own" \
    '$2 == own { print $1, suite, $3; exit }' <<<"$targets")
  mirror=$(awk -v suite="$suite" '$2 == suite { print $1; exit }' <<<"$sources")
  [[ -n $mirror ]] || die "this machine's apt has no Debian mirror"
}

# Chooses the directory for the system: an empty or missing one, or, without a name, one in
# /var/tmp. It is deleted at the end of the script unless `keep` is true.
keep=false
chooseDirectory() {
  directory=$1
  made_directory=false
  if [[ -z $directory ]]; then
    directory=$(mktemp -d "/var/tmp/$(basename "$program").XXXXXX")
    made_directory=true
  elif [[ ! -e $directory ]]; then
    mkdir -p "$directory"
    made_directory=true
  elif [[ ! -d $directory || -n $(ls -A "$directory") ]]; then
    die "$directory is not an empty directory"
  fi
  directory=$(cd "$directory" && pwd)
  root=$directory/root
  cd /
  trap finish EXIT
  trap 'exit 129' HUP
  trap 'exit 130' INT
  trap 'exit 143' TERM
}

job=
finish() {
  # Killing the job also unmounts everything that its processes have mounted.
  if [[ -n $job ]]; then
    kill -KILL "$job" 2>/dev/null || true
    wait "$job" 2>/dev/null || true
  fi
  if $keep; then
    echo "Kept: $root"
    return
  fi
  rm -rf --one-file-system "$root" "$directory/packages"
  ! $made_directory || rmdir "$directory"
}

# Runs a command in separate process and mount namespaces, which always end with it.
apart() {
  local code=0
  unshare --mount --propagation private --pid --fork --kill-child "$@" </dev/null &
  job=$!
  wait "$job" || code=$?
  job=
  return "$code"
}

megabytes() {
  du -smx "$1" | cut -f 1
}
# The size of all packages fetched so far, in MB.
fetched() {
  find "$directory/packages" "$root/var/cache/apt/archives" -name '*.deb' -printf '%i %s\n' \
    2>/dev/null | sort -u | awk '{ sum += $2 } END { printf "%d", sum / 1e6 }'
}

table=()
failed=false
# step NAME COMMAND...
step() {
  local name=$1 code=0 used loaded begin
  shift
  used=$(megabytes "$directory")
  loaded=$(fetched)
  echo
  echo "== $name"
  begin=$SECONDS
  "$@" || code=$?
  local seconds=$((SECONDS - begin))
  table+=("$(printf '%-28s %8d %14d %14d %13d %5d' "$name" "$seconds" "$(($(fetched) - loaded))" \
    "$used" "$(megabytes "$directory")" "$code")")
  ((code == 0)) || failed=true
  return "$code"
}
# report SYSTEM prints the steps.
report() {
  echo
  echo "Commit $revision in a bare $1, $(nproc) processors"
  printf '%-28s %8s %14s %14s %13s %5s\n' \
    step seconds "packages (MB)" "before (MB)" "after (MB)" code
  printf '%s\n' "${table[@]}"
}

# makeRoot SUITE [ARCHITECTURE]
makeRoot() {
  local suite=$1 architecture=${2-}
  mkdir -p "$directory/packages"
  local proxy=
  eval "$(apt-config shell proxy Acquire::http::Proxy)"
  [[ -z $proxy ]] || export http_proxy=$proxy
  apart debootstrap --variant=minbase ${architecture:+--arch="$architecture"} \
    --cache-dir="$directory/packages" "$suite" "$root" "$mirror" || return
  sed 's/^/deb /' <<<"$sources" >"$root/etc/apt/sources.list"
  # This machine's settings for its sources: proxies, certificates, and the check of dates.
  apt-config dump |
    grep -E '^Acquire::(https?|ftp|Check-Valid-Until|Check-Date|ForceIPv[46])\b' \
      >"$root/etc/apt/apt.conf.d/90machine" || true
  [[ -z ${http_proxy-} ]] ||
    echo "Acquire::http::Proxy \"$http_proxy\";" >>"$root/etc/apt/apt.conf.d/90machine"
  local file
  for file in /etc/hosts /etc/ssl/certs/ca-certificates.crt; do
    [[ ! -e $file ]] || install -D -m 644 "$file" "$root$file"
  done
}

cloneProject() {
  git clone --quiet --no-local "$repository" "$root$clone" &&
    git -C "$root$clone" fetch --quiet origin "$revision" &&
    git -C "$root$clone" checkout --quiet --detach "$revision"
}

# Runs a command in the clone. Terminals are available, as on any machine, but PATH is the only
# environment variable. `prepare`, if set, is a script that runs before the root directory is
# changed, with `root` set; `personality` is a command that starts the command.
prepare=
personality=()
namespaces=()
inRoot() {
  # shellcheck disable=SC2016
  apart "${namespaces[@]}" bash -c '
    set -e
    root=$1 clone=$2 prepare=$3
    shift 3
    mount -t proc proc "$root/proc"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620 devpts "$root/dev/pts"
    eval "$prepare"
    exec "$@"
  ' bash "$root" "$clone" "$prepare" "${personality[@]}" chroot "$root" /usr/bin/env -i \
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    /bin/bash --noprofile --norc -c 'cd "$0" && exec "$@"' "$clone" "$@"
}
