#!/usr/bin/env bash
# The shared library exports exactly the functions the public header
# declares, under the expected SONAME; every exported name is a known one
# when the list of known names is present beside the checkout.
set -euo pipefail
lib=$1 header=$2 known=${3:-}
fail=0

soname=$(objdump -p "$lib" | awk '$1 == "SONAME" {print $2}')
if [ "$soname" != "libqelsru8.so.6.1" ]; then
  echo "SONAME is '$soname', expected libqelsru8.so.6.1"; fail=1
fi

exported=$(nm -D --defined-only "$lib" | awk '{print $NF}' | sort -u)
declared=$(grep -v '^#' "$header" | tr '\n' ' ' | grep -oE 'QELSR_API[^;]*\(' | grep -oE '[A-Za-z_][A-Za-z0-9_]*[[:space:]]*\($' | tr -d ' (' | sort -u)

extra=$(comm -23 <(echo "$exported") <(echo "$declared"))
missing=$(comm -13 <(echo "$exported") <(echo "$declared"))
if [ -n "$extra" ]; then echo "exported but not declared:"; echo "$extra"; fail=1; fi
if [ -n "$missing" ]; then echo "declared but not exported:"; echo "$missing"; fail=1; fi

count=$(echo "$exported" | grep -c . || true)
echo "$count exported names"

if [ -n "$known" ] && [ -f "$known" ]; then
  unknown=$(comm -23 <(echo "$exported") <(tail -n +2 "$known" | cut -f1 | sort -u))
  if [ -n "$unknown" ]; then echo "not in the list of known exports:"; echo "$unknown"; fail=1; fi
else
  echo "list of known exports absent: that comparison is skipped"
fi
exit $fail
