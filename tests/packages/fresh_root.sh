#!/usr/bin/env bash
# Installs the packages of the program and for Python in a fresh root of the distribution, adjusts an example there with
# each and compares the results with those of a build; a network in a national grid, for which PROJ is loaded, is adjusted
# too; the manual page and the completions are there.
#   fresh_root.sh PACKAGES_FOLDER BUILD_FOLDER
# Exit status 77: no fresh root can be made here.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
command -v mmdebstrap >/dev/null || { echo "skipped: mmdebstrap is not installed"; exit 77; }
. /etc/os-release
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$1"/vorn_*.deb "$work/vorn.deb"
cp "$1"/python3-vorn_*.deb "$work/python3-vorn.deb"
example=/usr/share/doc/vorn/examples/strang_borre_distances_free.inp

# Packages as this machine has them; a root needs neither their documents nor their languages, but this program's.
make_root() {
    timeout 1200 mmdebstrap --mode=root --variant=apt --format=null --dpkgopt=force-unsafe-io \
        --dpkgopt='path-exclude=/usr/share/{doc,locale,man}/*' --dpkgopt='path-include=/usr/share/doc/vorn/*' \
        --dpkgopt='path-include=/usr/share/man/man1/vorn*' --aptopt='APT::Install-Recommends "false"' \
        "$@" "$VERSION_CODENAME" /dev/null >"$work/log" 2>&1
}
if ! apt-get -q download --print-uris libc6 >"$work/log" 2>&1; then
    echo "skipped: no packages can be reached"
    exit 77
fi
if ! make_root --customize-hook="copy-in $work/vorn.deb $work/python3-vorn.deb /tmp" \
    --customize-hook='chroot "$1" apt-get install -y /tmp/vorn.deb /tmp/python3-vorn.deb' \
    --customize-hook="chroot \"\$1\" python3 -c 'import vorn; print(vorn.adjust(\"$example\").to_json())' >$work/python.json" \
    --customize-hook='chroot "$1" vorn adjust /usr/share/doc/vorn/examples/utm_space.inp -o /dev/null' \
    --customize-hook="chroot \"\$1\" vorn adjust $example --json /tmp/result.json -o /tmp/report.txt" \
    --customize-hook="chroot \"\$1\" sh -c 'vorn adjust - --json - < $example > /tmp/piped.json'" \
    --customize-hook='chroot "$1" ls /usr/share/man/man1/vorn.1.gz /usr/share/man/man1/vorn-adjust.1.gz /usr/share/bash-completion/completions/vorn /usr/share/zsh/vendor-completions/_vorn /usr/share/fish/vendor_completions.d/vorn.fish' \
    --customize-hook="copy-out /tmp/result.json /tmp/piped.json /tmp/report.txt $work"; then
    if grep -q 'apt-get update.*failed\|Temporary failure\|Could not resolve\|Unable to fetch' "$work/log"; then
        echo "skipped: no packages can be reached"
        exit 77
    fi
    tail -n 40 "$work/log"
    exit 1
fi
"$2/vorn" adjust "$here/../../examples/$(basename "$example")" --quiet --json "$work/here.json" -o /dev/null
"$2/same-results" "$work/here.json" "$work/result.json"
"$2/same-results" "$work/here.json" "$work/python.json"
"$2/same-results" "$work/here.json" "$work/piped.json" | grep -v '^/file:' && exit 1
grep -q '^P  *free  *170.71227  *170.71853' "$work/report.txt"
echo "installed in a fresh $VERSION_CODENAME, equal results"
