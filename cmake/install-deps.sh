#!/bin/sh
# install-deps.sh PACKAGE...: installs the Debian packages named that are not there yet. Silent when all are there.
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

as_root=
[ "$(id -u)" -eq 0 ] || as_root=sudo
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get -q -o DPkg::Lock::Timeout=300 update
# shellcheck disable=SC2086
$as_root apt-get -q -y -o DPkg::Lock::Timeout=300 install --no-install-recommends $missing
