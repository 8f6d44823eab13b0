#!/usr/bin/env bash
#
# Runs the fuzzing, the soak and the opening tests for ./dev soak, on the program already built in
# build/release. Writes the report to build/soak/report.md.
#
#   soak.sh [MINUTES] [--documents N] [--seed N]
#
# Without MINUTES: a million documents, a day's worth of passes, the menu opened 5,000 times and
# About 1,000 times. With MINUTES: about that long, and fewer openings. --seed sets the seed of the
# first document and of the soak's steps; without it each run picks and prints its own.

set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit

BUILD=$PWD/build/release
RESULTS=$PWD/build/soak
SESSION=(tests/session/wine_session.sh run)

# In percent of MINUTES; the opening tests take the rest.
FUZZ_SHARE=30
CHURN_SHARE=60

fail_usage() {
    echo "soak: $*" >&2
    exit 2
}

minutes='' documents='' seed=()
while (($#)); do
    case $1 in
        --documents)
            [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || fail_usage "--documents needs a number"
            documents=$2
            shift 2
            ;;
        --seed)
            [[ ${2:-} =~ ^[0-9]+$ ]] || fail_usage "--seed needs a number"
            seed=(--seed "$2")
            shift 2
            ;;
        *)
            [[ $1 =~ ^[1-9][0-9]*$ && ! $minutes ]] || fail_usage "unknown argument $1"
            minutes=$1
            shift
            ;;
    esac
done

# The path in the form that Windows programs take.
windows_path() {
    local path=Z:$1
    printf '%s' "${path//\//\\}"
}

failed=()
part() {
    local name=$1
    shift
    echo "== $name"
    "$@" || failed+=("$name")
}

fuzz() {
    local amount=(--documents 1000000)
    [[ ! $minutes ]] || amount=(--seconds $((minutes * 60 * FUZZ_SHARE / 100)))
    [[ ! $documents ]] || amount=(--documents "$documents")
    # With this WINEDEBUG Wine reports damaged heaps.
    "${SESSION[@]}" env WINEDEBUG=-all,err+heap,warn+heap wine "$BUILD/morvane_fuzz.exe" "${amount[@]}" \
        "${seed[@]}" --kept "$(windows_path "$PWD/tests/fuzz/kept")" \
        --save "$(windows_path "$RESULTS")" --report "$(windows_path "$RESULTS/fuzz.rows")" 2>&1 |
        tee "$RESULTS/fuzz.log" || return
    ! grep -q ':heap:' "$RESULTS/fuzz.log"
}

churn() {
    local amount=()
    [[ ! $minutes ]] || amount=(--passes 1000000000
        --minutes "$((minutes * CHURN_SHARE / 100)).$((minutes * CHURN_SHARE % 100))")
    "${SESSION[@]}" wine "$BUILD/morvane_soak.exe" "${amount[@]}" "${seed[@]}" \
        --report "$(windows_path "$RESULTS/churn.rows")" 2>&1 | tee "$RESULTS/churn.log"
}

# These tests count what opened menus and dialogs leave behind in their own process, where all of it
# can be counted, and print the figures.
openings() {
    local full=1
    [[ ! $minutes ]] || full=0
    MORVANE_TEST_FULL=$full "${SESSION[@]}" wine "$BUILD/morvane_desktop_tests.exe" \
        --gtest_filter='*LeakTest.*' 2>&1 | tee "$RESULTS/openings.log" || return
    # measured: menu, 300 openings in 7000 ms; before: A; after: B
    sed -n 's/\r$//; s/^measured: \(.*\), \(.*\) openings in \(.*\); before: \(.*\); after: \(.*\)$/| \u\1 opened, in one process | \2 times | \3; before: \4; after: \5 |/p' \
        "$RESULTS/openings.log" >"$RESULTS/openings.rows"
    (($(wc -l <"$RESULTS/openings.rows") == 2)) || { echo "soak: the opening tests printed no figures" >&2; return 1; }
}

mkdir -p "$RESULTS"
rm -f "$RESULTS"/*.rows "$RESULTS/report.md"
MORVANE_TEST_PROGRAM=$(windows_path "$BUILD/Morvane.exe")
MORVANE_TEST_ACTOR=$(windows_path "$BUILD/window_actor.exe")
export MORVANE_TEST_PROGRAM MORVANE_TEST_ACTOR

part "fuzzing" fuzz
part "passes with churn" churn
part "openings" openings

{
    echo "| What | How much | Result |"
    echo "|---|---|---|"
    for rows in fuzz churn openings; do
        cat "$RESULTS/$rows.rows" 2>/dev/null ||
            { echo "| $rows | | FAILED, see $rows.log |"; failed+=("report of $rows"); }
    done
} >"$RESULTS/report.md"
echo
cat "$RESULTS/report.md"
if ((${#failed[@]})); then
    echo "soak: FAILED: ${failed[*]}" >&2
    exit 1
fi
