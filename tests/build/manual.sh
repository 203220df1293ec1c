#!/bin/sh
# The manual page and the completion name every command and option that the tool's help lists, and no other option.
# Usage: manual.sh TOOL SOURCE_DIR
set -eu
tool=$1
source=$2
status=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

subcommands() { "$tool" "$@" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z0-9]*\) .*/\1/p'; }
visit() { # visit COMMAND...
  echo "$*" >>"$work/commands"
  "$tool" "$@" --help | sed -n 's/^  \(-[a-z],\)\{0,1\}\(--[a-z0-9-]*\).*/\2/p' >>"$work/options"
  for name in $(subcommands "$@"); do
    visit "$@" "$name"
  done
}
visit
sort -u "$work/options" >"$work/helped"
grep -oE '\*--[a-z0-9-]+\*' "$source/docs/vexo.1.scd" | tr -d '*' | sort -u >"$work/written"
diff "$work/helped" "$work/written" || { echo "options in the help (<) or the manual (>) only"; status=1; }
while read -r command; do
  leaf=$(subcommands $command)
  if [ -n "$command" ] && { [ -z "$leaf" ] || [ "$command" = measure ]; } && ! grep -q "\*$command\*" "$source/docs/vexo.1.scd"; then
    echo "the manual has no command $command"
    status=1
  fi
  "$tool" $command --help | grep -q 'Example: vexo' || [ -n "$leaf" ] || { echo "$command: no example"; status=1; }
done <"$work/commands"

# completed WORDS...: what the completion offers for the last word
completed() {
  PATH="$(dirname "$tool"):$PATH" bash -c 'source "$0"; COMP_WORDS=(vexo "$@"); COMP_CWORD=$#; _vexo; printf "%s\n" "${COMPREPLY[@]}"' \
    "$source/completions/vexo" "$@"
}
offers() { # offers EXPECTED WORDS...: several expected words, or none for files, with blanks between them
  expected=$1
  shift
  found=$(completed "$@" | sort | tr '\n' ' ')
  [ "$found" = "$expected " ] || { echo "completion of '$*': $found, expected $expected"; status=1; }
}
offers calibrate cal
offers refine ref
offers "lut1d lut3d" lut
offers calibrate help cal
offers --recipe calibrate panel.xml --rec
offers --gray refine --gr
offers --max-size lut3d convert --max
offers "aligned direct solve" calibrate panel.xml --recipe ""
offers solve calibrate --recipe = s
offers "D50 D55" calibrate --white D5
offers "bt601-525 bt601-625" csc --space bt6
offers "cfe cube dat eecolor" lut3d info --from ""
offers "" calibrate pan
offers "" calibrate --gray ""
offers "" calibrate -o lut
exit $status
