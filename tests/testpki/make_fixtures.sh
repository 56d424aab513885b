#!/usr/bin/env bash
# Regenerates every fixture of the toolkit tests into tests/data/toolkit.
# Needs the openssl CLI (with the legacy provider, for SEED) and /usr/bin/python3.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
out="$here/../data/toolkit"
vectors="$here/../data/vectors"
rm -rf "$out"
mkdir -p "$out"
bash "$here/make_test_pki.sh" "$out"
/usr/bin/python3 "$here/make_kcdsa_certs.py" "$out/intermediate.der" "$out/intermediate.key" \
    "$out/leaf.der" "$vectors/kcdsa.txt" "$out"
/usr/bin/python3 "$here/make_npki_keys.py" "$out/leaf.key" "$out" \
    "$vectors/pbe_seed_sha1.txt" "$vectors/kcdsa.txt"
bash "$here/make_crls.sh" "$out"
rm -rf "$here/__pycache__"
