#!/bin/sh
# run.sh PACKAGES PYTHON PRELOAD MODULES ARGUMENT...: runs Python with what lies in PACKAGES. Skipped (77) where the package
# zrasn was not built there, or Python lacks one of the MODULES.
set -eu
packages=$1 python=$2 preload=$3 modules=$4
shift 4
ls "$packages"/zrasn/_zrasn.*.so >/dev/null 2>&1 || { echo "the package is not built: python3-dev is missing"; exit 77; }
for module in $modules; do
    "$python" -c "import $module" 2>/dev/null || { echo "$module is missing"; exit 77; }
done
# What Python keeps to its end is no leak of the module's; where there is no memory its allocators are told so.
export ASAN_OPTIONS=detect_leaks=0:allocator_may_return_null=1
export PYTHONDONTWRITEBYTECODE=1 PYTHONMALLOC="${preload:+malloc}" PYTHONPATH="$packages"
[ -n "$preload" ] || unset PYTHONMALLOC
LD_PRELOAD=$preload exec "$python" "$@"
