#!/usr/bin/env bash
# Installs the Debian packages of the named lists that are missing. Says what it installs; silent when
# nothing is to do.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
missing=()
for list in "$@"; do
    while read -r package; do
        case "$package" in '' | '#'*) continue ;; esac
        dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done <"$here/$list.txt"
done
[ ${#missing[@]} -eq 0 ] && exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "These packages are missing, and sudo is not there to install them: ${missing[*]}" >&2
        exit 1
    }
    root=(sudo)
fi
echo "Installing: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${root[@]}" apt-get update -qq &&
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    exit 1
fi
