#!/usr/bin/env bash
# Makes the test PKI in tests/data/testpki (its README.md lists what and why):
# an RSA test CA, two RSA end entities and two KCDSA end entities (1024/160 and
# 2048/224) certified by that CA.
#
#   tests/testpki/generate.sh [OUT-DIR]
#
# Needs the openssl CLI (with the legacy provider, for SEED) and /usr/bin/python3.
# Every run makes new keys; names, serial numbers, extensions and the password
# stay the same.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
out=${1:-$root/tests/data/testpki}
days=10950  # thirty years, so that the fixtures outlive the project
password=vqxml-test
legacy=(-provider legacy -provider default)

mkdir -p "$out"
cd "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "CA" >&2
openssl req -x509 -newkey rsa:2048 -nodes -sha256 -utf8 -days "$days" -set_serial 1 \
  -subj "/C=KR/O=VQXML Test/OU=Test CA/CN=VQXML Test Root CA" \
  -addext "keyUsage=critical,keyCertSign,cRLSign" \
  -keyout ca-rsa.key.pem -out ca-rsa.crt.pem 2>/dev/null
openssl x509 -in ca-rsa.crt.pem -outform DER -out ca-rsa.crt.der

cat > "$work/ee.ext" <<'EXT'
basicConstraints=critical,CA:FALSE
keyUsage=critical,digitalSignature,nonRepudiation,keyEncipherment
subjectKeyIdentifier=hash
authorityKeyIdentifier=keyid
EXT

# rsa_end_entity NAME SERIAL SUBJECT
rsa_end_entity() {
  echo "$1" >&2
  openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$1.key.pem" 2>/dev/null
  openssl req -new -utf8 -key "$1.key.pem" -subj "$3" -out "$work/$1.csr"
  openssl x509 -req -sha256 -days "$days" -set_serial "$2" -in "$work/$1.csr" \
    -CA ca-rsa.crt.pem -CAkey ca-rsa.key.pem -extfile "$work/ee.ext" -out "$1.crt.pem" 2>/dev/null
  openssl x509 -in "$1.crt.pem" -outform DER -out "$1.crt.der"
  openssl pkcs8 -topk8 -nocrypt -in "$1.key.pem" -outform DER -out "$1.key.der"
  openssl pkcs8 -topk8 "${legacy[@]}" -v2 seed-cbc -passout "pass:$password" \
    -in "$1.key.pem" -outform DER -out "$1.key.enc.der"
}

# kcdsa_end_entity NAME PBITS QBITS SERIAL SUBJECT
kcdsa_end_entity() {
  echo "$1" >&2
  openssl genpkey -genparam -algorithm DSA -pkeyopt "dsa_paramgen_bits:$2" \
    -pkeyopt "dsa_paramgen_q_bits:$3" -out "$work/$1.params.pem" 2>/dev/null
  openssl dsaparam -in "$work/$1.params.pem" -outform DER -out "$work/$1.params.der"
  /usr/bin/python3 "$here/kcdsa_end_entity.py" "$work/$1.params.der" ca-rsa.crt.der ca-rsa.key.pem "$5" "$4" \
    "$days" "$password" "$1"
}

rsa_end_entity ee-rsa 4097 "/C=KR/O=VQXML Test/OU=xUsers/OU=개발팀/CN=홍길동()0012345RSA"
rsa_end_entity ee-rsa-b 4098 "/C=KR/O=VQXML Test/OU=Servers/CN=server.vqxml.test"
kcdsa_end_entity ee-kcdsa1024 1024 160 8193 "/C=KR/O=VQXML Test/OU=personal4IB/CN=김철수()0020001KCDSA"
kcdsa_end_entity ee-kcdsa2048 2048 224 123456789012345678901234567890 \
  "/C=KR/O=VQXML Test/OU=전자세금계산서/CN=(주)브이큐테스트()0030001KCDSA"

for cert in ee-rsa ee-rsa-b ee-kcdsa1024 ee-kcdsa2048; do
  openssl verify -CAfile ca-rsa.crt.pem "$cert.crt.pem" >/dev/null 2>&1 || [[ $cert == ee-kcdsa* ]] ||
    { echo "$cert does not verify" >&2; exit 1; }
done
echo "done: $out" >&2
