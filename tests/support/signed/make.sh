#!/bin/sh
# Made the files beside it, with the minisign command as a maker of devices would use it; run anew it makes others.
# Nobody needs the secret keys any more: they are thrown away.
set -eu
cd "$(dirname "$0")"
keys=$(mktemp -d)
trap 'rm -r "$keys"' EXIT
for name in maker stranger; do
    minisign -G -f -W -p $name.pub -s "$keys/$name" >/dev/null
done

# sign KEY FILE SIGNATURE TIME [OPTION...]
sign() {
    key=$1 file=$2 signature=$3 time=$4
    shift 4
    minisign -S "$@" -s "$keys/$key" -m "$file" -x "$signature" -t "timestamp:$time	file:$(basename "$file")" >/dev/null
}

# list PROGRAM VERSION [LINE...], a firmware.inf
list() {
    printf '[Corvane]\n%s\n[PGM_R200]\nPRODUCT=TARN-R200\nVERSION=%s\nDESC=one\nFILE=/f/r200.hex\n' "$1" "$2"
    shift 2
    [ $# = 0 ] || printf '%s\n' "$@"
}

# signed NAME TIME PROGRAM VERSION [LINE...] makes such a list and its signature, as NAME.inf and NAME.minisig
signed() {
    name=$1 time=$2
    shift 2
    list "$@" >"$keys/firmware.inf"
    cp "$keys/firmware.inf" "$name.inf"
    sign maker "$keys/firmware.inf" "$name.minisig" "$time"
}
digest=SHA256=$(sha256sum <image.hex | cut -d' ' -f1)
program="Version=V9.0R0
File=/p
SHA256=$(printf 'new program' | sha256sum | cut -d' ' -f1)"

list Version=V0.9R1 V5.2R1 "$digest" '[PGM_BARE]' PRODUCT=TARN-R200 VERSION=V5.3R1 DESC=two FILE=/f/r200.hex >firmware.inf
sign maker firmware.inf good.minisig 1767225600
sign maker firmware.inf legacy.minisig 1767225600 -l
sign stranger firmware.inf stranger.minisig 1767225600
sign maker image.hex image.minisig 1767225600
minisign -S -s "$keys/maker" -m firmware.inf -x timeless.minisig -t 'no time' >/dev/null
signed older 1735689600 Version=V0.9R1 V5.1R1 "$digest"
signed bare 1767225600 Version=V9.0R0 V5.2R1
signed program 1767225600 "$program" V5.2R1 "$digest"
