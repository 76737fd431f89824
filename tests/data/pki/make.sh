#!/bin/bash
# Makes the certificates, keys and signed messages of this folder with OpenSSL (3.0 with the "gost" engine).
# Everything is made anew with new keys: run it only when a file has to be added, and commit all of the result.
#
# facts.txt holds what OpenSSL says about the certificates (name, SHA-1 thumbprint, serial number, bits of the key);
# tests compare with it.
set -euo pipefail
cd "$(dirname "$0")"

password=corvane
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
rm -f ./*.der ./*.pem ./*.pfx ./*.p7s ./*.txt ./*.bin

cat >"$work/ca.cnf" <<CONFIG
openssl_conf = programs
[programs]
engines = engines
oid_section = names
[names]
RN = 1.2.643.3.141.1.1
WRO = 1.2.643.3.141.1.2
[engines]
gost = gost
[gost]
engine_id = gost
default_algorithms = ALL
[ca]
default_ca = ca_default
[ca_default]
database = $work/index
serial = $work/serial
new_certs_dir = $work
policy = policy_any
email_in_dn = yes
unique_subject = no
default_md = sha256
default_startdate = 20200101000000Z
default_enddate = 20491231235959Z
[policy_any]
commonName = supplied
surname = optional
organizationName = optional
unstructuredName = optional
RN = optional
WRO = optional
[req]
distinguished_name = dn
string_mask = utf8only
[dn]
[v1]
[root]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
[intermediate]
basicConstraints = critical, CA:TRUE, pathlen:0
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
[signer]
basicConstraints = CA:FALSE
keyUsage = critical, digitalSignature, nonRepudiation, dataEncipherment
extendedKeyUsage = clientAuth, emailProtection, 1.2.643.2.2.34.6
certificatePolicies = 1.2.643.100.113.1, 1.2.643.100.113.2
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
authorityInfoAccess = caIssuers;URI:http://pki.example/ca.der, OCSP;URI:http://ocsp.example/first, OCSP;URI:http://ocsp.example/second
[plain]
basicConstraints = CA:FALSE
keyUsage = digitalSignature, keyAgreement, encipherOnly
subjectKeyIdentifier = hash
CONFIG
touch "$work/index"
export OPENSSL_CONF=$work/ca.cnf

# issue NAME ISSUER SECTION SERIAL SUBJECT KEY-OPTIONS... : a key and a certificate; NAME = ISSUER is self-signed.
issue() {
    local name=$1 issuer=$2 section=$3 serial=$4 subject=$5
    shift 5
    openssl genpkey "$@" -out "$work/$name.key" 2>/dev/null
    openssl req -new -utf8 -key "$work/$name.key" -subj "$subject" -out "$work/$name.req"
    local signing=(-keyfile "$work/$issuer.key" -cert "$work/$issuer.pem")
    [ "$name" != "$issuer" ] || signing=(-selfsign -keyfile "$work/$name.key")
    echo "$serial" >"$work/serial"
    local extensions=(-extensions "$section")
    [ "$section" != v1 ] || extensions=()
    openssl ca -batch -notext -utf8 -preserveDN \
        -in "$work/$name.req" -out "$work/$name.pem" "${signing[@]}" "${extensions[@]}" 2>"$work/log" ||
        { cat "$work/log"; exit 1; }
}

rsa=(-algorithm RSA -pkeyopt rsa_keygen_bits:2048)
issue root root root 01 "/CN=Corvane Test Root/O=Corvane" "${rsa[@]}"
issue intermediate root intermediate 02 "/CN=Corvane Test Intermediate/O=Corvane" "${rsa[@]}"
issue signer intermediate signer 0AB1C2D3E4F506172839 \
    "/CN=Иванов Иван/SN=Иванов/O=ООО \"Ромашка\", Тула/unstructuredName=1-FE/RN=RN-1/WRO=WRO-1" \
    "${rsa[@]}"
issue second intermediate plain 7F01 "/CN=Second Signer" "${rsa[@]}"
issue legacy legacy v1 030201 "/CN=Version One" "${rsa[@]}"
issue gost2001 intermediate plain 2001 "/CN=GOST 2001" -algorithm gost2001 -pkeyopt paramset:A
issue gost256 intermediate plain 02012256 "/CN=GOST 2012 256" -algorithm gost2012_256 -pkeyopt paramset:A
issue gost512 intermediate plain 02012512 "/CN=GOST 2012 512" -algorithm gost2012_512 -pkeyopt paramset:A

issue curve curve v1 7F02 "/CN=Elliptic Curve" -algorithm EC -pkeyopt ec_paramgen_curve:P-256

printf 'The quick brown fox jumps over the lazy dog.\r\n' >document.bin

for name in root intermediate signer second legacy gost2001 gost256 gost512 curve; do
    openssl x509 -in "$work/$name.pem" -outform DER -out "$name.der"
done
cp "$work/signer.pem" signer.pem
cat "$work/intermediate.pem" "$work/root.pem" >chain.pem
for name in signer second; do
    openssl pkcs12 -export -legacy -inkey "$work/$name.key" -in "$work/$name.pem" -certfile chain.pem \
        -passout "pass:$password" -out "$name.pfx"
done

# cms FILE OPTIONS... : a message over document.bin
cms() {
    openssl cms -sign -binary -in document.bin -md sha256 -outform DER -out "$1" "${@:2}"
}
one=(-signer "$work/signer.pem" -inkey "$work/signer.key")
two=("${one[@]}" -signer "$work/second.pem" -inkey "$work/second.key")
cms detached-attributes.p7s "${one[@]}"
cms detached-plain.p7s "${one[@]}" -noattr
cms attached-attributes.p7s "${one[@]}" -nodetach
cms attached-plain.p7s "${one[@]}" -nodetach -noattr
cms attached-ber.p7s "${one[@]}" -nodetach -noattr -stream -indef
cms detached-chain.p7s "${one[@]}" -noattr -certfile chain.pem
cms detached-no-certificate.p7s "${one[@]}" -noattr -nocerts
cms detached-two-signers.p7s "${two[@]}" -noattr
cms attached-two-signers.p7s "${two[@]}" -noattr -nodetach
openssl crl2pkcs7 -nocrl -certfile chain.pem -outform DER -out no-signers.p7s

for name in root intermediate signer second legacy; do
    hash=$(openssl x509 -in "$work/$name.pem" -noout -fingerprint -sha1 | sed 's/.*=//; s/://g')
    serial=$(openssl x509 -in "$work/$name.pem" -noout -serial | sed 's/.*=//')
    bits=$(openssl x509 -in "$work/$name.pem" -noout -text | sed -n 's/.*Public-Key: (\([0-9]*\) bit).*/\1/p')
    printf '%s\t%s\t%s\t%s\n' "$name" "$hash" "$serial" "$bits"
done >facts.txt
