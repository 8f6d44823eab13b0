#!/usr/bin/env bash
#
# Signs a program file in place.
#
#   sign.sh FILE
#
# Environment: MORVANE_SIGN_CERT and MORVANE_SIGN_KEY, certificate chain and key (PEM);
# MORVANE_SIGN_TIME_URL, a time-stamping service. Without one the signature carries the time
# MORVANE_SIGN_EPOCH and is the same every time.

set -euo pipefail

file=$1
arguments=(-h sha256 -certs "$MORVANE_SIGN_CERT" -key "$MORVANE_SIGN_KEY" -n Morvane
    -time "$MORVANE_SIGN_EPOCH")
[[ -z ${MORVANE_SIGN_TIME_URL:-} ]] || arguments+=(-ts "$MORVANE_SIGN_TIME_URL")
osslsigncode sign "${arguments[@]}" -in "$file" -out "$file.signed" >/dev/null
mv "$file.signed" "$file"
