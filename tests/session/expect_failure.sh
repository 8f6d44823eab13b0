#!/usr/bin/env bash
#
# Passes if a command fails and says why. ctest ignores the status where it judges the output.
#
#   expect_failure.sh PATTERN COMMAND [ARGUMENT...]     PATTERN is a regular expression

set -uo pipefail
pattern=$1
shift
if output=$("$@" 2>&1); then
    failed=no
else
    failed=yes
fi
printf '%s\n' "$output"
[[ $failed == yes && ${output//$'\r'/} =~ $pattern ]] && exit
echo "expected a failure, and in its output: $pattern" >&2
exit 1
