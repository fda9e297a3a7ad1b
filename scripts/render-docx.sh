#!/bin/sh
# Renders a .docx or .dotx to PNG pages with LibreOffice, for looking at it.
#   scripts/render-docx.sh FILE [OUTDIR] [DPI]
# Pages land in OUTDIR (default: a new temporary folder) as page-N.png.
set -eu
if [ $# -lt 1 ]; then
  echo "usage: $0 FILE [OUTDIR] [DPI]" >&2
  exit 2
fi
file=$1
out=${2:-$(mktemp -d)}
dpi=${3:-60}
command -v soffice >/dev/null || { echo "soffice not found" >&2; exit 1; }
command -v pdftoppm >/dev/null || { echo "pdftoppm not found" >&2; exit 1; }
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# LibreOffice opens templates as new documents; a .docx name avoids that detour.
base=$(basename "$file")
name=${base%.*}
cp "$file" "$work/$name.docx"
HOME="$work" timeout 180 soffice --headless --norestore --convert-to pdf --outdir "$work" "$work/$name.docx" >"$work/log" 2>&1 || {
  cat "$work/log" >&2
  exit 1
}
pdftoppm -png -r "$dpi" "$work/$name.pdf" "$out/page"
ls "$out"/page-*.png
