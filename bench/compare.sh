#!/usr/bin/env bash
# Times whole zpreport runs on generated studies, for one build or two side by side.
#
#   bench/compare.sh [-n RUNS] [-s "STUDIES"] [-w WORKDIR] BUILD [OTHER_BUILD]
#
# BUILD is a build folder holding zpreport, libzpreport.so and templates/ (a Release build:
# cmake -S . -B build-rel -DCMAKE_BUILD_TYPE=Release -DZP_TESTS=OFF). With two builds each
# study is run by both in turn, RUNS times (the order swapped every round), so that both see
# the same machine; the table shows the median time, the largest peak memory (maximum
# resident set) and the document's size of each build.
#
# STUDIES names the studies (default: "sample b100 b1000 b10000 m100 m1000"):
#   sample   the bracket sample (examples/bracket)
#   bN       N solid bodies, each with its own JPEG
#   mN       N materials, each with a JPEG and two PNG curves
#   iN       N images placed in the study results, each with its own JPEG
# They are made by bench/make_study.py into WORKDIR (default: build-bench/studies beside
# this script's checkout) the first time and kept there.
set -euo pipefail

runs=3
studies="sample b100 b1000 b10000 m100 m1000"
here="$(cd "$(dirname "$0")" && pwd)"
root="$(cd "$here/.." && pwd)"
work="$root/build-bench/studies"
while getopts "n:s:w:h" opt; do
  case $opt in
    n) runs=$OPTARG ;;
    s) studies=$OPTARG ;;
    w) work=$OPTARG ;;
    *) sed -n '2,20p' "$0"; exit 2 ;;
  esac
done
shift $((OPTIND - 1))
(($# >= 1 && $# <= 2)) || { sed -n '2,20p' "$0"; exit 2; }
builds=()
for b in "$@"; do
  b="$(cd "$b" && pwd)"
  [[ -x "$b/zpreport" && -f "$b/libzpreport.so" ]] || { echo "no zpreport in $b" >&2; exit 2; }
  builds+=("$b")
done
[[ -x /usr/bin/time ]] || { echo "needs /usr/bin/time (Debian package: time)" >&2; exit 2; }

mkdir -p "$work"
study_file() {  # the study file of a name, made when missing
  local name=$1
  if [[ $name == sample ]]; then echo "$root/examples/bracket/study.json"; return; fi
  local kind=${name:0:1} count=${name:1} flag
  case $kind in
    b) flag=--bodies ;;
    m) flag=--materials ;;
    i) flag=--images ;;
    *) echo "unknown study $name" >&2; exit 2 ;;
  esac
  if [[ ! -f "$work/$name/study.json" ]]; then
    python3 "$here/make_study.py" "$work/$name" "$flag" "$count"
  fi
  echo "$work/$name/study.json"
}
items_of() {
  local name=$1
  [[ $name == sample ]] && { echo 1; return; }
  echo "${name:1}"
}

# One run: prints "seconds peak_kb document_bytes".
run_once() {
  local build=$1 study=$2 out
  out="$(mktemp -d "$work/out.XXXXXX")"
  local log="$out/time.log"
  if ! /usr/bin/time -f "%e %M" -o "$log" "$build/zpreport" generate "$study" --out "$out" --name Bench \
       >"$out/stdout" 2>"$out/stderr"; then
    echo "zpreport failed on $study:" >&2
    cat "$out/stderr" >&2
    rm -rf "$out"
    exit 1
  fi
  local doc size
  doc="$(head -n1 "$out/stdout")"
  size=$(stat -c %s "$doc")
  echo "$(tail -n1 "$log") $size"
  rm -rf "$out"
}

median() { sort -g | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2}'; }
max() { sort -g | tail -n1; }

printf "%-8s" "study"
for i in "${!builds[@]}"; do
  printf " | %9s %8s %9s %8s %6s" "time s" "ms/item" "peak MB" "doc MB" "peak/d"
done
((${#builds[@]} == 2)) && printf " | %7s %7s" "time" "peak"
printf "\n"

for name in $studies; do
  study="$(study_file "$name")"
  items=$(items_of "$name")
  declare -A times=() peaks=() sizes=()
  for ((r = 0; r < runs; r++)); do
    order=("${!builds[@]}")
    ((r % 2 == 1 && ${#builds[@]} == 2)) && order=(1 0)
    for i in "${order[@]}"; do
      read -r t m s < <(run_once "${builds[$i]}" "$study")
      times[$i]+="$t "
      peaks[$i]+="$m "
      sizes[$i]=$s
    done
  done
  printf "%-8s" "$name"
  declare -a med=() pk=()
  for i in "${!builds[@]}"; do
    med[$i]=$(echo "${times[$i]}" | tr ' ' '\n' | grep . | median)
    pk[$i]=$(echo "${peaks[$i]}" | tr ' ' '\n' | grep . | max)
    awk -v t="${med[$i]}" -v n="$items" -v m="${pk[$i]}" -v s="${sizes[$i]}" 'BEGIN {
      printf " | %9.2f %8.3f %9.1f %8.1f %6.1f", t, 1000 * t / n, m / 1024, s / 1048576, m * 1024 / s }'
  done
  if ((${#builds[@]} == 2)); then
    awk -v a="${med[0]}" -v b="${med[1]}" -v pa="${pk[0]}" -v pb="${pk[1]}" 'BEGIN {
      printf " | %6.2fx %6.2fx", (b > 0 ? a / b : 0), (pb > 0 ? pa / pb : 0) }'
  fi
  printf "\n"
  unset times peaks sizes med pk
done
((${#builds[@]} == 2)) && echo "(last columns: first build's time and peak over the second's; above 1 means the second is faster or smaller)"
exit 0
