#!/bin/sh
# install-deps.sh PACKAGE...: installs the Debian packages named that are not there yet, as root or by sudo. Silent when
# all are there; where it cannot install, it fails and says what is to be done.
set -eu

missing=
for package in "$@"; do
    status=$(dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null || true)
    case "$status" in
        installed*) ;;
        *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

by_hand() {
    cat >&2 <<END
$1 Missing packages:$missing
This line installs them, as root:
    apt-get update && apt-get install --no-install-recommends$missing
END
    exit 1
}
as_root=
if ! command -v apt-get >/dev/null; then
    by_hand "There is no apt-get here; the names are Debian's."
elif [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || by_hand "Installing packages takes root or sudo, and here is neither."
    as_root=sudo
fi
# A package that would have others removed is left to the user.
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
# shellcheck disable=SC2086
{
    $as_root apt-get -q -o DPkg::Lock::Timeout=300 update &&
        $as_root apt-get -q -y -o DPkg::Lock::Timeout=300 install --no-remove --no-install-recommends $missing
} || by_hand "Not all packages could be installed."
