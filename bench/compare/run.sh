#!/usr/bin/env bash
# Measures vqxml against libxmlsec1 and the OpenSSL floor and writes the table
# into docs/performance.md.
#   bench/compare/run.sh [--signatures | --encryption] [BUILD_DIR]   (default: build; configured if needed)
# --signatures: only the signature rows and the floor; --encryption: only the
# encryption rows (quicker runs while working on one; the tables written then
# have only those).
# Speed: bench_compare (Google Benchmark), every implementation in the same run.
# Memory: bench_compare_memory under /usr/bin/time -v, one process per kind,
# implementation and size, and the same with no operation for the baseline.
set -euo pipefail
cd "$(dirname "$0")/../.."
filter=.
kinds_wanted=.
if [ "${1:-}" = --signatures ]; then
    filter='(sign|verify)/|^floor/'
    kinds_wanted='-(sign|verify)$'
    shift
elif [ "${1:-}" = --encryption ]; then
    filter='(encrypt|decrypt)/'
    kinds_wanted='-(encrypt|decrypt)$'
    shift
fi
build=${1:-build}
[ -f "$build/CMakeCache.txt" ] || cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j2 --target bench_compare bench_compare_memory >/dev/null
bench=$build/bench/compare/bench_compare
driver=$build/bench/compare/bench_compare_memory
# The raw results stay next to the programs: report.py can write the table again.
results=$build/bench/compare/results
mkdir -p "$results"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "speed: $bench" >&2
# A warm-up keeps the first benchmark of the run from paying for a cold process.
# Three repetitions of each row, interleaved at random with the other rows, so
# that a busy spell of the shared machine does not fall on one row alone; the
# report takes the median and says how far the repetitions were apart.
"$bench" --benchmark_filter="$filter" --benchmark_min_warmup_time=0.5 \
    --benchmark_repetitions=3 --benchmark_enable_random_interleaving=true \
    --benchmark_out="$results/speed.json" --benchmark_out_format=json >&2

# Operations per memory run: enough to reach the steady peak, few where slow.
operations() {
    case $1/$2/$3 in
        xmlsec/*sign/1m | xmlsec/*verify/1m | */*/10m) echo 1 ;;
        */*/1m) echo 3 ;;
        */*/100k | */*/kec99) echo 20 ;;
        *) echo 100 ;;
    esac
}

# The peak, or nothing when the operation failed (an implementation without the
# cipher): the row is then left out, and the report says why from the speed run.
peak_kb() {
    { /usr/bin/time -v "$@" 2>&1 >/dev/null || true; } | awk -F': ' '/Exit status/ && $2 != 0 {failed = 1}
        /Maximum resident set size/ {peak = $2} END {if (!failed) print peak}'
}

# Below a megabyte an operation adds a few hundred kilobytes, about as much as
# one process's peak differs from the next one's: the median of three runs
# there, one run above.
median_peak_kb() {
    local size=$1 runs=3
    shift
    case $size in 1m | 10m) runs=1 ;; esac
    for _ in $(seq "$runs"); do peak_kb "$@"; done | sort -n | awk '{v[NR] = $1} END {if (NR) print v[int((NR + 1) / 2)]}'
}

echo "memory: $driver" >&2
printf 'kind\timpl\tsize\toperations\tbaseline_kb\tpeak_kb\n' >"$results/memory.tsv"
for size in $("$driver" sizes); do
    "$driver" prepare "$work" "$size"
    for kind in $("$driver" kinds "$size" | grep -E -- "$kinds_wanted"); do
        for impl in vqxml xmlsec; do
            # libxmlsec1's XPath transform at 10 MB would take hours.
            case $impl/$kind/$size in xmlsec/*sign/10m | xmlsec/*verify/10m) continue ;; esac
            n=$(operations "$impl" "$kind" "$size")
            base=$(median_peak_kb "$size" "$driver" run "$work" "$impl" "$kind" "$size" 0)
            peak=$(median_peak_kb "$size" "$driver" run "$work" "$impl" "$kind" "$size" "$n")
            [ -n "$base" ] && [ -n "$peak" ] || { echo "no memory row for $kind/$impl/$size" >&2; continue; }
            printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$kind" "$impl" "$size" "$n" "$base" "$peak" | tee -a "$results/memory.tsv" >&2
        done
    done
done

/usr/bin/python3 bench/compare/report.py "$results/speed.json" "$results/memory.tsv" >docs/performance.md
echo "wrote docs/performance.md" >&2
