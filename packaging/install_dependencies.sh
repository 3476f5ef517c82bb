#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Installs the Debian packages of the named sections of dependencies.txt that are missing, or says which they are.
# With --versions first it only prints them: with their versions, those of their sources, and the licence of most of each.
set -eu

list=$(dirname "$0")/dependencies.txt

wanted() {
    for section in "$@"; do
        sed -n "/^\[$section\]/,/^\[/p" "$list" | grep -v -e '^\[' -e '^#' -e '^$'
    done
}

# Of the files that the package's copyright names no others for.
licence_of() {
    found=$(awk 'BEGIN { RS = "" } /(^|\n)Files: *\*/' "/usr/share/doc/$1/copyright" | sed -n 's/^License: *//p' | head -n 1)
    echo "${found:-see /usr/share/doc/$1/copyright}"
}

if [ "$1" = --versions ]; then
    shift
    wanted "$@" | sort -u |
        xargs dpkg-query -W -f '${Package} ${Version} (source ${source:Package} ${source:Version})\n' |
        while read -r package rest; do
            echo "$package $rest: $(licence_of "$package")"
        done
    exit
fi

missing=
for package in $(wanted "$@"); do
    status=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
    case $status in
    ii*) ;;
    *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
    become=
elif sudo -n true 2>/dev/null; then
    become=sudo
else
    echo "These Debian packages are missing:$missing" >&2
    echo "Install them as root: apt-get install$missing" >&2
    exit 1
fi

echo "Installing:$missing"
$become apt-get update -q
# What a package brings along as a service is for the tests to start, when they need it: none is started now.
# shellcheck disable=SC2086 # a list of words
$become env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 SYSTEMD_OFFLINE=1 \
    apt-get install -y -q --no-install-recommends $missing
