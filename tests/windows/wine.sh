#!/bin/sh
# wine.sh starts|ends SERVER LOADER ENVIRONMENT...: one Windows that serves all programs of a run. Each
# would else start its own and wait for what that does in the background. It ends by itself when it
# has had nothing to do for five minutes.
set -eu
action=$1 server=$2 loader=$3
shift 3
exec </dev/null >/dev/null 2>&1
case $action in
starts)
  "$@" sh -c 'mkdir -p "$WINEPREFIX"'
  "$@" "$server" -p300
  "$@" "$loader" wineboot
  ;;
ends) "$@" "$server" -k ;;
esac
