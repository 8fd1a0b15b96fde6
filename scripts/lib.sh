# Shared by the scripts of this folder; sourced, never run.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Fetched and built files of Windows targets are kept outside the tree, one folder a user.
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

# own_archive: address and codename of the archive that this system takes its packages from.
own_archive() {
  local codename
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  [ -n "$codename" ] || die "/etc/os-release has no VERSION_CODENAME"
  apt-get indextargets --format '$(REPO_URI) $(SUITE) $(CODENAME) $(COMPONENT)' \
    'Created-By: Packages' 2>/dev/null |
    awk -v name="$codename" '($2 == name || $3 == name) && $4 == "main" && !found {
      print $1, name; found = 1 }'
}

# debian_mirror: Debian's archive, the one that this system uses if it is a Debian.
debian_mirror() {
  local uri name
  read -r uri name < <(own_archive) || true
  case ${uri:-} in
    */debian | */debian/) echo "$uri" ;;
    *) echo http://deb.debian.org/debian ;;
  esac
}
