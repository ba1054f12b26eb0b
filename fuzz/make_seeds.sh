#!/usr/bin/env bash
# Remakes the seed corpus in fuzz/seeds with `fxgraph nodeui pack`.
#   fuzz/make_seeds.sh path/to/fxgraph
set -euo pipefail
fxgraph="${1:?usage: fuzz/make_seeds.sh path/to/fxgraph}"
seeds="$(cd "$(dirname "$0")" && pwd)/seeds/objects"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cookie=5f1c0a3e9b7d4e21a8c6f0b2d4e6a8c0.1.0

seed() { # name json
  printf '%s\n' "$2" >"$work/$1.json"
  "$fxgraph" nodeui pack "$work/$1.json" "$seeds/$1.objects" >/dev/null
}

seed empty '{"records": []}'
seed one '{"records": [{"node": "2.0.1", "cookie": "'$cookie'", "draw": [0.25, -0.5], "manual": [0.25, -0.5], "manualSet": true}]}'
seed three '{"records": [
  {"node": "2.0.1", "cookie": "'$cookie'", "draw": [0, 0], "manual": [0, 0], "manualSet": false},
  {"node": "3.0.1", "cookie": "'$cookie'", "draw": [-0.1875, 0.09375], "manual": [-0.1875, 0.09375], "manualSet": true},
  {"node": "3.0.2", "draw": [-0.1875, -0.09375], "manual": [-0.25, -0.125], "manualSet": true}]}'
seed manual_unset '{"records": [{"node": "7.1.9", "cookie": "'$cookie'", "draw": [1.5, 2.5], "manual": [3, 4], "manualSet": false}]}'
seed extreme '{"records": [
  {"node": "4294967295.4294967295.4294967295", "cookie": "ffffffffffffffffffffffffffffffff.65535.65535",
   "draw": [-1.7976931348623157e308, 1e300], "manual": [-5e-324, "-Infinity"], "manualSet": true},
  {"node": "1.0.0", "draw": ["NaN", -123456789.125], "manual": ["Infinity", -0.0], "manualSet": false}]}'
ls -l "$seeds"
