#!/usr/bin/env bash
# Batch benchmark: a tree of small reports (10 x 10 folders, 100 reports each: 10,000 files,
# 3 levels deep) converted to CSV with one command line, against one report of the same total
# size. Prints files per second and the per-file overhead of the batch.
# Usage: bench/batch/run.sh [path-to-kroveld] [files-per-leaf-folder]
set -euo pipefail
kroveld="${1:-build/kroveld}"
per_leaf="${2:-100}"
rows=20

work="$(mktemp -d "${TMPDIR:-/tmp}/kroveld-bench-batch.XXXXXX")"
trap 'rm -rf "$work"' EXIT
export KROVELD_HOME="$work/home"
mkdir -p "$KROVELD_HOME"

cat > "$work/ledger.krs" <<'KRS'
[Header]
Product=KRO
FileType=EXPORT SPEC
FileFormat=1.1
[General]
Name=Ledger
[Table 1]
ReadStartLine=ACCOUNT  DESCRIPTION
ReadStartLineOffset=2
ReadEndLine=END OF LEDGER
ReadEndLineOffset=-1
TotalColumns=3
[Table 1 Col 1]
ReadColumnStart=1
ReadColumnEnd=8
WriteColumn=A
PeriodOperator=
[Table 1 Col 2]
ReadColumnStart=10
ReadColumnEnd=39
WriteColumn=B
PeriodOperator=
[Table 1 Col 3]
ReadColumnStart=41
ReadColumnEnd=54
WriteColumn=C
PeriodOperator=
KRS
cat > "$work/ledger.rcp" <<'RCP'
[Header]
Product=KRO
FileType=RECIPE
FileFormat=1.1
[Output File]
OutputFileName=ledger.csv
InputFileFirst=1
InputFileLast=1
ExportSpecFileName=ledger.krs
[Input Files]
1FileName=ledger.txt
RCP

# One report: a title, the table heading, a rule, `rows` account lines, the end line.
gawk -v rows="$rows" -v per_leaf="$per_leaf" -v root="$work/in" -v big="$work/single/all.txt" '
function report(out, n,   i) {
  printf "GENERAL LEDGER  PERIOD 06/2024\r\nACCOUNT  DESCRIPTION\r\n--------\r\n" > out
  for (i = 1; i <= n; i++)
    printf "%-8d %-30s %14s\r\n", 1000 + i, "Account number " i, sprintf("%\047.2f", i * 101.25) > out
  printf "END OF LEDGER\r\n" > out
  close(out)
}
BEGIN {
  for (a = 0; a < 10; a++) for (b = 0; b < 10; b++) {
    dir = root "/d" a "/e" b
    system("mkdir -p " dir)
    for (c = 0; c < per_leaf; c++) report(dir "/r" c ".txt", rows)
  }
  system("mkdir -p " root "/../single")
  report(big, rows * 100 * per_leaf)
}'

files=$((100 * per_leaf))
now() { date +%s.%N; }

t0=$(now)
"$kroveld" -i "$work/in/*.txt" -o "$work/out/*.csv" -r "$work/ledger.rcp" -s
t1=$(now)
"$kroveld" -i "$work/single/all.txt" -o "$work/single/all.csv" -r "$work/ledger.rcp"
t2=$(now)

converted=$(find "$work/out" -name '*.csv' | wc -l)
batch_rows=$(cat "$work"/out/*/*/*.csv | wc -l)
single_rows=$(wc -l < "$work/single/all.csv")
gawk -v t0="$t0" -v t1="$t1" -v t2="$t2" -v files="$files" -v conv="$converted" \
     -v br="$batch_rows" -v sr="$single_rows" 'BEGIN {
  batch = t1 - t0; single = t2 - t1
  printf "batch:  %d files (%d converted, %d rows) in %.2f s = %.0f files/s, %.3f ms per file\n", files, conv, br, batch, files / batch, 1000 * batch / files
  printf "single: one file of the same rows (%d rows) in %.2f s\n", sr, single
  printf "per-file overhead of the batch: %.3f ms (goal < 2 ms)\n", 1000 * (batch - single) / files
}'
