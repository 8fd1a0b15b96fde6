# Shared by the scripts of this folder; sourced, never run.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What is fetched or built for Windows targets is kept outside the tree, one folder a user.
export TEMVAR_CACHE=${TEMVAR_CACHE:-${XDG_CACHE_HOME:-$(echo ~)/.cache}/temvar}
wine_root=$TEMVAR_CACHE/wine32-root

say() { printf '== %s\n' "$*"; }
warn() { printf '!! %s\n' "$*" >&2; }
die() {
  warn "$*"
  exit 1
}

as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "must be root, or have sudo, to run: $*"
  fi
}

apt_get() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=900 "$@" </dev/null
}

# not_installed PACKAGE...: those of the list that are missing, one a line.
not_installed() {
  dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null |
    sed -n 's/^installed //p' | sort -u |
    comm -13 - <(printf '%s\n' "$@" | sort -u)
}

# debian_mirror: the archive that this machine takes its packages from.
debian_mirror() {
  local uri
  uri=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 2>/dev/null |
    grep -E '/debian/?$' | head -n 1) || true
  echo "${uri:-http://deb.debian.org/debian}"
}
