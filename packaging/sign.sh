#!/usr/bin/env bash
#
# Signs a program file in place.
#
#   sign.sh CERTIFICATES KEY EPOCH FILE
#
# With the address of a time stamping service in MORVANE_SIGN_TIME_URL the signature carries that
# service's time, else the time EPOCH, and is the same every time.

set -euo pipefail

certificates=$1 key=$2 epoch=$3 file=$4
arguments=(-h sha256 -certs "$certificates" -key "$key" -n Morvane -time "$epoch")
[[ -z ${MORVANE_SIGN_TIME_URL:-} ]] || arguments+=(-ts "$MORVANE_SIGN_TIME_URL")
osslsigncode sign "${arguments[@]}" -in "$file" -out "$file.signed" >/dev/null
mv "$file.signed" "$file"
