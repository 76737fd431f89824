#!/usr/bin/env bash
# Made the requests of this folder with OpenSSL 3.0 and its GOST engine. Keys are made anew each time and thrown away, so
# another run gives other keys and signatures, and everything else alike.
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/openssl.cnf" <<'END'
openssl_conf = programs
oid_section = identifiers
[identifiers]
unnamed = 1.2.3.4
[programs]
engines = engines
[engines]
gost = gost
[gost]
engine_id = gost
default_algorithms = ALL
[req]
distinguished_name = name
req_extensions = extensions
attributes = attributes
string_mask = utf8only
utf8 = yes
prompt = no
[attributes]
challengePassword = secret
[name]
C = RU
DC = example
street = Ленина 1
ST = 77
L = Москва
O = ООО \"Ромашка\" + Ко
OU = \#1
CN = Иванов, Иван
OGRN = 1234567890123
INN = 001234567890
+SNILS = 12345678901
emailAddress = i@example.org
unnamed = x y
[extensions]
keyUsage = critical, digitalSignature, nonRepudiation, keyAgreement, decipherOnly
extendedKeyUsage = clientAuth, emailProtection, 1.2.643.2.2.34.6
certificatePolicies = 1.2.643.100.113.1, 1.3.6.1.4.1.11129.2.5.1
subjectAltName = email:ivan@example.org, DNS:example.org, URI:https://example.org/a, IP:192.0.2.1, IP:2001:db8::1, RID:1.2.3, dirName:directory
1.2.643.100.111 = ASN1:FORMAT:UTF8,UTF8String:Средство
[directory]
C = RU
CN = Ivanov
END
export OPENSSL_CONF=$work/openssl.cnf
request() { # FILE KEY-OPTION...
    openssl req -new -nodes -keyout "$work/key" -outform DER -out "$1" -newkey "${@:2}"
}
request rsa.der rsa:1024
request gost2001.der gost2001 -pkeyopt paramset:A
