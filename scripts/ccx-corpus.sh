#!/usr/bin/env bash
# Generates a report from every deck of Debian's calculix-ccx-test package and counts the
# outcomes: how many decks give a report, and why the others do not.
#
#   scripts/ccx-corpus.sh [--solve] [BUILD_DIR]
#
# --solve runs ccx on each deck first (at most 60 s each), so that the reports have results.
# Without it the reports are made from the decks alone. The program is BUILD_DIR/zpreport
# (default build-rel). Everything is done in a temporary folder, removed at the end; the
# summary goes to standard output, one line per deck to BUILD_DIR/ccx-corpus.log.
set -euo pipefail
solve=0
if [[ "${1:-}" == "--solve" ]]; then solve=1; shift; fi
build="${1:-build-rel}"
program="$(cd "$build" && pwd)/zpreport"
corpus=/usr/share/doc/calculix-ccx-test/examples/test
[[ -x "$program" ]] || { echo "ccx-corpus: $program is not built" >&2; exit 2; }
[[ -d "$corpus" ]] || { echo "ccx-corpus: $corpus is missing (apt-get install calculix-ccx-test)" >&2; exit 2; }
if ((solve)) && ! command -v ccx >/dev/null; then echo "ccx-corpus: --solve needs ccx (calculix-ccx)" >&2; exit 2; fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
log="$(cd "$build" && pwd)/ccx-corpus.log"
: >"$log"
for source in "$corpus"/*.inp "$corpus"/*.inp.gz; do
  name=$(basename "$source"); name=${name%.gz}; job=${name%.inp}
  dir="$work/$job"; mkdir -p "$dir" "$dir/out"
  if [[ "$source" == *.gz ]]; then zcat "$source" >"$dir/$name"; else cp "$source" "$dir/$name"; fi
  # Decks include their neighbours (meshes, sets): copy what the package has beside them.
  { grep -io '^\*include *, *input *= *[^ ,]*' "$dir/$name" || true; } | sed 's/.*= *//' | while read -r inc; do
    for c in "$corpus/$inc" "$corpus/$inc.gz"; do
      [[ -f "$c" ]] || continue
      if [[ "$c" == *.gz ]]; then zcat "$c" >"$dir/$inc"; else cp "$c" "$dir/$inc"; fi
    done
  done
  solved="-"
  if ((solve)); then
    if (cd "$dir" && timeout 60 ccx -i "$job" >ccx.log 2>&1) && [[ -s "$dir/$job.frd" ]]; then solved=solved; else solved=unsolved; fi
  fi
  set +e
  "$program" generate "$dir/$name" --out "$dir/out" >"$dir/stdout" 2>"$dir/stderr"
  code=$?
  set -e
  reason=$({ grep -v '^zpreport: warning' "$dir/stderr" || true; } | { grep -m1 'zpreport' || true; } | sed "s#$dir/##g" | cut -c1-160)
  # What the report says of the results it could not read.
  results=$({ grep -m1 -E '\.(frd|dat)(:[0-9]+)?: ' "$dir/stderr" || true; } | sed "s#$dir/##g; s#^zpreport: warning: ##" | cut -c1-160)
  printf '%s\t%s\t%s\t%s\t%s\n' "$job" "$code" "$solved" "$reason" "$results" >>"$log"
  rm -rf "$dir"
done
total=$(wc -l <"$log")
echo "decks: $total"
echo "by exit code (0 = report written):"
cut -f2 "$log" | sort | uniq -c | sort -rn
if ((solve)); then
  echo "solved by ccx: $(cut -f3 "$log" | grep -c '^solved$') of $total"
  echo "reports with results: $(awk -F'\t' '$2==0 && $3=="solved"' "$log" | wc -l)"
fi
echo "reports that say a result file could not be read: $(awk -F'\t' '$2==0 && $5!=""' "$log" | wc -l)"
awk -F'\t' '$2==0 && $5!="" {print $5}' "$log" | sed -E 's/^[^:]*:[0-9]*: //; s/[0-9]+/N/g' | sort | uniq -c | sort -rn | head -10
echo "why the others give no report:"
awk -F'\t' '$2!=0 {print $4}' "$log" | sed -E 's/^[^:]*:[0-9]*: //; s/^zpreport: //' | sed -E 's/[0-9]+/N/g' | sort | uniq -c | sort -rn | head -20
echo "(one line per deck: $log)"
