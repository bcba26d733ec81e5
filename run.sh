#!/usr/bin/env bash
# Shows the whole road on this machine: a gateway service with a demo account on a free loopback port and a fresh data
# folder. On a desktop it opens the client's window, ready to log in; without one it sends a plain, a personalised and a
# flash message from the terminal and follows them to their final statuses. Installs and builds what is missing first. Safe
# to run again: every run starts afresh in demo/.
set -euo pipefail
cd "$(dirname "$0")"
scripts/packages.sh build
scripts/build.sh package orvalo orvaloctl orvalo-gateway

bin=build/package/bin
data=demo/client
say() { printf '\n== %s\n' "$1"; }
ctl() { "$bin/orvaloctl" --data "$data" "$@"; }
# A member of the first JSON object on standard input.
member() { grep -oE "\"$1\": ?\"?[^\",}]*" | head -n 1 | sed -E 's/^[^:]*: ?"?//'; }
# Sends and follows to the end; that somebody does not get it (status 7) is part of the show.
send() { ctl send "$@" --wait 30 || [ $? -eq 7 ]; }
# The sum of a member over all objects; texts that are no number count as nothing.
total() { grep -oE "\"$1\": ?\"?[0-9.]+" | sed -E 's/^[^:]*: ?"?//' | awk '{ sum += $1 } END { printf "%.1f\n", sum }'; }

rm -rf demo
mkdir -p demo
"$bin/orvalo-gateway" --listen 127.0.0.1:0 --port-file demo/port --data demo/gateway --demo --sim-delivery-seconds 1 \
  >demo/gateway.log 2>&1 &
service=$!
trap 'kill "$service" 2>/dev/null; wait "$service" 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -s demo/port ] && break; sleep 0.1; done
[ -s demo/port ] || { echo "The gateway service did not start:" >&2; cat demo/gateway.log >&2; exit 1; }

say "Log in to the gateway service on 127.0.0.1:$(cat demo/port)"
ctl init --gateway "http://127.0.0.1:$(cat demo/port)" >/dev/null
ORVALO_PASSWORD=demo ctl login demo --remember
before=$(ctl --json balance | member balance)

say "An address book: the group Friends with three contacts"
ctl group add Friends
ctl contact add --name Ann --surname Archer --title Ms --mobile 27821110001 --group Friends
ctl contact add --name Bob --surname Brewer --mobile 27821110002 --group Friends
ctl contact add --name Cleo --surname Carter --mobile 27821119907 --group Friends  # the network fails to deliver this one

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  say "The window: log in as demo (password demo, already filled in), tick Friends on the SMS page and send"
  ORVALO_DATA_PATH="$PWD/$data" "$bin/orvalo"
  exit
fi

say "A plain text to four numbers, as one batch"
send --to 27830000001,27830000002,27830000003,27830009909 --text "The shop opens at nine."
say "A personalised text to the group"
send --group Friends --text "Dear <<FIRSTNAME>> <<SURNAME>>, see you tonight."
say "A flash message"
send --to 27840000001 --type flash --text "Doors open!"

say "The outbox"
ctl outbox
after=$(ctl --json balance | member balance)
charged=$(ctl --json outbox | total Charge)
debited=$("$bin/orvalo-gateway" ledger --data demo/gateway --json | total charge)
spent=$(awk -v a="$before" -v b="$after" 'BEGIN { printf "%.1f\n", a - b }')
say "Balance $before before, $after after: spent $spent; charges in the outbox $charged; debits in the ledger $debited"
[ "$spent" = "$charged" ] && [ "$charged" = "$debited" ] || { echo "The figures do not add up." >&2; exit 1; }
echo "The figures add up."
echo "On a desktop (DISPLAY or WAYLAND_DISPLAY is set) ./run.sh opens the window on this account."
