#!/bin/bash
# documented_options.sh SARNUM SOURCES: every option of every --help, which has an example, stands in
# the man page and in both completions, and they have no others; bash completes commands, options,
# values and files; the man page formats without warnings.
set -eu
tool=$1 sources=$2
fail() {
  echo "$*" >&2
  exit 1
}
options_in() { grep -oE -- '--[a-z]+(-[a-z]+)*' | sort -u; }

source "$sources/completion/sarnum.bash"
complete_words() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _sarnum
  echo "${COMPREPLY[*]}"
}

for command in '' info stats detect multilook spectrum; do
  help=$("$tool" $command --help)
  [[ $help == *$'\n'Example*$'\n  sarnum '* && -z $(grep -E '.{101}' <<<"$help") ]] ||
    fail "sarnum $command --help has no example, or a line of more than 100 columns"
  known=$(sed -nE 's/^ +(-[a-z],)?(--[a-z-]+).*/\2/p' <<<"$help" | sort -u)
  [ "$(complete_words sarnum $command -- | options_in)" = "$known" ] ||
    fail "bash completion of sarnum $command differs from its --help:" $known
  all+=$'\n'$known
done
all=$(sort -u <<<"$all" | sed '/^$/d')
[ "$(sed 's/\\-/-/g' "$sources/sarnum.1" | options_in)" = "$all" ] || fail "sarnum.1 has not just" $all
[ "$(options_in <"$sources/completion/_sarnum")" = "$all" ] || fail "_sarnum has not just" $all
if command -v man >/dev/null; then
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$sources/sarnum.1" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "$warnings"
fi

cd "$sources"
for expected in 'multilook=mu' 'skip=multilook a b --nodata s' 'zero=spectrum --nodata z' 'main.cpp=info mai' '--from-db=multilook --from'; do
  [ "$(complete_words sarnum ${expected#*=})" = "${expected%%=*}" ] || fail "not completed: $expected"
done
