#!/usr/bin/env bash
# Makes the signature tests' keys: a test root CA and an RSA-2048 signer it issued,
# with a Korean distinguished name, and EC (P-256, P-384, P-521) and DSA (2048/256)
# signers it issued for the XML Signature 1.1 algorithms. Run from this folder; the
# outputs are committed.
set -euo pipefail
days=36500
openssl req -x509 -newkey rsa:2048 -nodes -keyout ca-key.pem -out ca.pem -days $days -sha256 \
  -subj "/C=KR/O=vqxml test/CN=vqxml Test Root CA" -utf8 \
  -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign"
openssl req -new -newkey rsa:2048 -nodes -keyout signer-key.pem -out signer.csr -utf8 \
  -subj "/C=KR/O=테스트상사/OU=전자세금계산서/CN=홍길동"
openssl x509 -req -in signer.csr -CA ca.pem -CAkey ca-key.pem -set_serial 4660 -days $days -sha256 \
  -extfile <(printf "basicConstraints=CA:FALSE\nkeyUsage=critical,digitalSignature,nonRepudiation,keyEncipherment\n") \
  -out signer.pem
openssl x509 -in ca.pem -outform DER -out ca.der
openssl x509 -in signer.pem -outform DER -out signer-cert.der
openssl pkcs8 -topk8 -nocrypt -in signer-key.pem -outform DER -out signer-key.pk8.der
openssl rsa -in signer-key.pem -traditional -out signer-key.pkcs1.pem
printf 'tax-invoice-shared-secret' > hmac.bin
# signer-<kind>.crt.der and signer-<kind>.key.pk8.der (and .key.pem, PKCS #8 PEM).
issue() {
  local kind=$1 serial=$2
  openssl req -new -key "signer-$kind.key.pem" -out "signer-$kind.csr" -subj "/C=KR/O=vqxml test/CN=signer $kind"
  openssl x509 -req -in "signer-$kind.csr" -CA ca.pem -CAkey ca-key.pem -set_serial "$serial" -days $days -sha256 \
    -extfile <(printf "basicConstraints=CA:FALSE\nkeyUsage=critical,digitalSignature,nonRepudiation\n") \
    -outform DER -out "signer-$kind.crt.der"
  openssl pkcs8 -topk8 -nocrypt -in "signer-$kind.key.pem" -outform DER -out "signer-$kind.key.pk8.der"
  rm -f "signer-$kind.csr"
}
for curve in P-256 P-384 P-521; do
  kind="ec${curve#P-}"
  openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:$curve -out "signer-$kind.key.pem"
  issue "$kind" "$((4660 + ${curve#P-}))"
done
openssl genpkey -genparam -algorithm DSA -pkeyopt dsa_paramgen_bits:2048 -pkeyopt dsa_paramgen_q_bits:256 \
  -out dsa2048.param.pem
openssl genpkey -paramfile dsa2048.param.pem -out signer-dsa2048.key.pem
issue dsa2048 6708
rm -f signer.csr ca.srl dsa2048.param.pem
