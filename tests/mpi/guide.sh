#!/usr/bin/env bash
# Follows the guide of docs/scale.md in a fresh root of the distribution, command by command, and compares the report
# with that of a build on this machine: guide.sh BUILD
# Exit status 77: no fresh root can be made here.
set -euo pipefail
build=$(realpath "$1") here=$(cd "$(dirname "$0")/../.." && pwd)
command -v mmdebstrap >/dev/null || { echo "skipped: mmdebstrap is not installed"; exit 77; }
. /etc/os-release
unset CMAKE_CXX_COMPILER_LAUNCHER # which the fresh root does not have
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if ! apt-get -q download --print-uris libc6 >"$work/log" 2>&1; then
    echo "skipped: no packages can be reached"
    exit 77
fi

# What a user of a checkout has, and the guide's first commands as root, who needs no sudo.
mkdir "$work/vorn"
git -C "$here" ls-files -z | tar -C "$here" -c --null -T - | tar -C "$work/vorn" -x
{
    echo 'set -e; cd /root/vorn; export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1'
    awk '/^```/ { block++; next } block == 1' "$here/docs/scale.md" |
        sed -e 's/^sudo apt-get install/apt-get install -y/' -e 's/cmake --build [^ ]*/& -j2/' -e '/^mpirun/s|$| >/tmp/report.txt|'
} >"$work/guide"
grep -q '^mpirun -n 2 ' "$work/guide"

if ! timeout 2400 mmdebstrap --mode=root --variant=apt --format=null --dpkgopt=force-unsafe-io \
    --dpkgopt='path-exclude=/usr/share/{doc,locale,man}/*' --aptopt='APT::Install-Recommends "false"' \
    --customize-hook="copy-in $work/vorn /root" --customize-hook="copy-in $work/guide /tmp" \
    --customize-hook='chroot "$1" sh /tmp/guide' --customize-hook="copy-out /tmp/report.txt $work" \
    "$VERSION_CODENAME" /dev/null >"$work/log" 2>&1; then
    if grep -q 'apt-get update.*failed\|Temporary failure\|Could not resolve\|Unable to fetch' "$work/log"; then
        echo "skipped: no packages can be reached"
        exit 77
    fi
    tail -n 40 "$work/log"
    exit 1
fi

"$build/vorn" adjust "$here/examples/photo_block.inp" >"$work/here.txt" 2>/dev/null
lines() { grep -v -E '[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]+ UTC|seconds|^file ' "$1" | sed "s|$2/||g"; } # files of images by their paths
diff <(lines "$work/here.txt" "$here") <(lines "$work/report.txt" /root/vorn)
echo "two processes in a fresh $VERSION_CODENAME, the same report"
