#!/usr/bin/env bash
# Makes the small RSA test PKI of the toolkit tests with the openssl CLI:
#   root.der, root.key self-signed CA "vqxml Test Root", its PKCS #8 key (PEM)
#   intermediate.der   CA under root
#   leaf.der, leaf.key end-entity certificate under intermediate, its PKCS #8 key (PEM)
#   leaf_expired.der   under intermediate, valid 2001-2002 only
#   leaf_revoked.der   under intermediate (make_crls.sh revokes it)
#   not_ca.der         end-entity certificate (CA:FALSE) under intermediate ...
#   under_not_ca.der   ... that nevertheless "issued" this one
#   intermediate.key   the intermediate's key (signs the KCDSA test certificates)
#   other_root.der     an unrelated self-signed CA
# Dates are fixed (2020-01-01 to 2099-12-31 unless said); keys are fresh on every run,
# so a rerun gives equivalent, not identical, files.
set -euo pipefail
out="${1:?usage: make_test_pki.sh OUTPUT_DIR}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out"

cat >"$work/ca.cnf" <<CNF
[ca]
default_ca = test_ca
[test_ca]
database = $work/index.txt
new_certs_dir = $work
serial = $work/serial
default_md = sha256
policy = any_name
unique_subject = no
email_in_dn = no
[any_name]
countryName = optional
organizationName = optional
commonName = supplied
[req]
distinguished_name = dn
prompt = no
[dn]
CN = unused
[ca_ext]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
[leaf_ext]
basicConstraints = critical, CA:FALSE
keyUsage = critical, digitalSignature, keyEncipherment
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
CNF
: >"$work/index.txt"
echo 1000 >"$work/serial"

key() { openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$work/$1.key" 2>/dev/null; }

# issue NAME SUBJECT ISSUER EXTENSIONS [START END]; ISSUER "self" self-signs.
issue() {
    local name=$1 subject=$2 issuer=$3 ext=$4 start=${5:-20200101000000Z} end=${6:-20991231235959Z}
    key "$name"
    openssl req -new -config "$work/ca.cnf" -key "$work/$name.key" -subj "$subject" -out "$work/$name.csr"
    local signer=(-cert "$work/$issuer.pem" -keyfile "$work/$issuer.key")
    [ "$issuer" = self ] && signer=(-selfsign -keyfile "$work/$name.key")
    openssl ca -batch -notext -config "$work/ca.cnf" "${signer[@]}" -in "$work/$name.csr" \
        -extensions "$ext" -startdate "$start" -enddate "$end" -out "$work/$name.pem" 2>/dev/null
    openssl x509 -in "$work/$name.pem" -outform DER -out "$out/$name.der"
}

issue root "/C=KR/O=vqxml test/CN=vqxml Test Root" self ca_ext
issue intermediate "/C=KR/O=vqxml test/CN=vqxml Test Intermediate" root ca_ext
issue leaf "/C=KR/O=vqxml test/CN=vqxml Test Leaf" intermediate leaf_ext
issue leaf_expired "/C=KR/O=vqxml test/CN=vqxml Expired Leaf" intermediate leaf_ext \
    20010101000000Z 20020101000000Z
issue leaf_revoked "/C=KR/O=vqxml test/CN=vqxml Revoked Leaf" intermediate leaf_ext
issue not_ca "/C=KR/O=vqxml test/CN=vqxml Not A CA" intermediate leaf_ext
issue under_not_ca "/C=KR/O=vqxml test/CN=vqxml Under Not A CA" not_ca leaf_ext
issue other_root "/C=KR/O=vqxml other/CN=vqxml Other Root" self ca_ext

openssl pkcs8 -topk8 -nocrypt -in "$work/root.key" -out "$out/root.key"
openssl pkcs8 -topk8 -nocrypt -in "$work/leaf.key" -out "$out/leaf.key"
openssl pkcs8 -topk8 -nocrypt -in "$work/intermediate.key" -out "$out/intermediate.key"
