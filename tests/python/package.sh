#!/usr/bin/env bash
# The Python package of a build (VORN_PYTHON): its tests, types and notebook; then its wheel, installed without an index
# into an environment of its own.
#   package.sh BUILD_FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=$(cd "$1" && pwd)
python=/usr/bin/python3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export MPLCONFIGDIR=$work/matplotlib MYPY_CACHE_DIR=$work/mypy PYTHONDONTWRITEBYTECODE=1
quietly() { "$@" >"$work/log" 2>&1 || { tail -n 60 "$work/log" >&2; exit 1; }; }

export PYTHONPATH=$build/python
quietly $python "$here/package_test.py"
grep '^Ran' "$work/log"
$python "$here/measure.py"
$python "$here/notebook.py" "$root/python/tutorial.ipynb"
quietly $python -m mypy --config-file "$root/python/pyproject.toml" "$build/python/vorn"
quietly $python -m mypy.stubtest vorn._vorn --allowlist "$here/stubtest_allowed.txt"
echo "types agree"

unset PYTHONPATH
quietly env VORN_BUILD="$build" $python -m pip wheel "$root/python" --no-index --no-deps --no-build-isolation \
    --no-cache-dir -w "$work/wheels"
$python -m venv --system-site-packages "$work/environment"
quietly "$work/environment/bin/pip" install --no-index --no-deps "$work"/wheels/vorn-*.whl
cd "$work"
cat >application.py <<'END'
import sys, vorn
result = vorn.adjust(sys.argv[1])
print(vorn.__file__.startswith(sys.prefix), result.points["x"].round(5).tolist())
END
[ "$(environment/bin/python application.py "$root/examples/strang_borre_distances_free.inp")" = \
    "True [170.71227, 170.7032, 99.99121, 241.43332]" ] || { echo "the wheel gives something else" >&2; exit 1; }
echo "the wheel works in an environment of its own"
