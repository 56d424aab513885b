#!/usr/bin/env bash
# Makes the CRLs of the toolkit tests with the openssl CLI, from the certificates
# and keys make_test_pki.sh and make_kcdsa_certs.py left in OUTPUT_DIR:
#   intermediate.crl.der        by the intermediate, 2020 to 2099: revokes
#                               leaf_revoked and kcdsa_ca (a KCDSA-key certificate)
#   intermediate_stale.crl.der  by the intermediate, for 2001 only: out of date now
#   root.crl.der                by the root, 2020 to 2099: revokes the intermediate
set -euo pipefail
out="${1:?usage: make_crls.sh OUTPUT_DIR}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/crl.cnf" <<'CNF'
[ca]
default_ca = crl_ca
[crl_ca]
database = $ENV::CRL_DATABASE
default_md = sha256
CNF
pem() { openssl x509 -inform DER -in "$out/$1.der" -out "$work/$1.pem"; }

# crl NAME ISSUER LAST_UPDATE NEXT_UPDATE [REVOKED...]: a CRL of its own database.
crl() {
    local name=$1 issuer=$2 last=$3 next=$4
    shift 4
    export CRL_DATABASE="$work/$name.index"
    : >"$CRL_DATABASE"
    local signer=(-config "$work/crl.cnf" -cert "$work/$issuer.pem" -keyfile "$out/$issuer.key")
    for revoked in "$@"; do
        pem "$revoked"
        openssl ca -batch "${signer[@]}" -revoke "$work/$revoked.pem" 2>/dev/null
    done
    openssl ca -batch "${signer[@]}" -gencrl -crl_lastupdate "$last" -crl_nextupdate "$next" \
        -out "$work/$name.pem" 2>/dev/null
    openssl crl -in "$work/$name.pem" -outform DER -out "$out/$name.der"
}

pem root
pem intermediate
crl intermediate.crl intermediate 20200101000000Z 20991231235959Z leaf_revoked kcdsa_ca
crl intermediate_stale.crl intermediate 20010101000000Z 20020101000000Z
crl root.crl root 20200101000000Z 20991231235959Z intermediate
