#!/usr/bin/env bash
# Makes the signature tests' keys: a test root CA and an RSA-2048 signer it issued,
# with a Korean distinguished name. Run from this folder; the outputs are committed.
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
rm -f signer.csr ca.srl
