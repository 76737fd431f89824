#!/bin/bash
# Makes the keys, certificates and messages of this folder with OpenSSL and its "gost" engine: a root and two leaves of each
# kind, KIND-root, KIND-1 and KIND-2 (.pem, .key in PKCS #8; for rsa .pfx as well, password "corvane"), of rsa, gost2001
# (parameters A), gost256 and gost512; roots.pem has all the roots. Everything is made anew: run it only when a file has to be
# added, commit all of the result, and reset the prefixes that have the older ones (tools/wine-env --prefix NAME reset).
#
# The messages are for machines where OpenSSL has no such engine. document.bin is the content of all: KIND-1.p7m (attached, by
# KIND-1, no signed attributes), KIND-2.p7m (attached, by both, in indefinite lengths, with signed attributes), KIND-3.p7s
# (detached, by KIND-2, with attributes, signer by key identifier), and KIND.env (for KIND-1 and KIND-2).
set -euo pipefail
cd "$(dirname "$0")"
export OPENSSL_CONF=$PWD/../../platform/pki/openssl.cnf
rm -f ./*.pem ./*.key ./*.pfx ./*.p7? ./*.env
for options in "RSA rsa_keygen_bits:2048" "gost2001 paramset:A" "gost2012_256 paramset:TCA" "gost2012_512 paramset:A"; do
    read -r algorithm parameters <<<"$options"
    kind=${algorithm/2012_/} kind=${kind,,}
    for name in "$kind-root" "$kind-1" "$kind-2"; do
        openssl genpkey -out "$name.key" -algorithm "$algorithm" -pkeyopt "$parameters"
    done
    openssl req -x509 -new -key "$kind-root.key" -subj "/CN=Root of $kind" -days 3650 -extensions root -out "$kind-root.pem"
    for name in "$kind-1" "$kind-2"; do
        openssl req -new -key "$name.key" -subj "/CN=Leaf $name/O=Tests" |
            openssl x509 -req -CA "$kind-root.pem" -CAkey "$kind-root.key" -CAcreateserial -days 3650 \
                -extfile "$OPENSSL_CONF" -extensions leaf -out "$name.pem"
    done
done
rm -f ./*.srl
cat ./*-root.pem >roots.pem
for name in rsa-1 rsa-2; do
    # what the system's import reads
    openssl pkcs12 -export -legacy -in "$name.pem" -inkey "$name.key" -passout pass:corvane -out "$name.pfx"
done
head -c 5000 /dev/urandom >document.bin
for pair in gost2001:md_gost94 gost256:md_gost12_256 gost512:md_gost12_512; do
    kind=${pair%:*}
    sign() { # OUT NAME... -- OPTION...
        local out=$1 signers=()
        shift
        for (( ; $# > 0; )); do
            [[ $1 != -- ]] || break
            signers+=(-signer "$1.pem" -inkey "$1.key")
            shift
        done
        shift
        openssl cms -sign -binary -outform DER -in document.bin -out "$out" -md "${pair#*:}" "${signers[@]}" "$@"
    }
    sign "$kind-1.p7m" "$kind-1" -- -nodetach -noattr
    sign "$kind-2.p7m" "$kind-1" "$kind-2" -- -nodetach -stream
    sign "$kind-3.p7s" "$kind-2" -- -keyid
    openssl cms -encrypt -binary -outform DER -in document.bin -out "$kind.env" -gost89 "$kind-1.pem" "$kind-2.pem"
done
