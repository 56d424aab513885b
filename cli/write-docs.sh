#!/usr/bin/env bash
# Writes docs/cli.md: the introduction below and every command's --help.
#   cli/write-docs.sh [path/to/vqxml]    (default build/cli/vqxml)
# The CLI tests check that docs/cli.md holds the tool's current help texts.
set -euo pipefail
cd "$(dirname "$0")/.."
vqxml=${1:-build/cli/vqxml}
{
    cat <<'EOF'
# The vqxml tool

`vqxml` does the library's operations from the command line. It is built and installed with
the library (`bin/vqxml`) and uses nothing but the C interface of `vqxml/vqxml.h`.

```sh
vqxml sign --cert ee-rsa.crt.pem --key ee-rsa.key.pem -o signed.xml taxinvoice.xml
vqxml verify --signer-cert signer.der signed.xml
vqxml sign --alg kcdsa-sha1 --cert ee.crt.der --key signPri.key --password-file pw.txt -o signed.xml taxinvoice.xml
vqxml sign --alg ecdsa-sha256 --c14n c14n11 --cert ec.crt.der --key ec.key.pk8.der -o signed.xml taxinvoice.xml
vqxml encrypt --symm seed --recipient server.crt.pem -o encrypted.xml taxinvoice.xml
vqxml decrypt --cert server.crt.pem --key server.key.pem encrypted.xml
vqxml soap-sign --cert ee.crt.pem --key ee.key.pem request.xml | vqxml soap-encrypt --recipient server.crt.pem >secured.xml
vqxml soap-process --cert server.crt.pem --key server.key.pem secured.xml
vqxml ebxml-sign --cert ee.crt.pem --key ee.key.pem -o signed.mime message.mime
vqxml key-random --password-file pw.txt signPri.key
vqxml cert-verify ee.crt.der
vqxml cert-verify --chain yessignCA.crt.der --crl dp5p1.crl ee.crt.der
vqxml verify --trust --crl dp5p1.crl signed.xml
```

- **Files.** Inputs are read whole; `-` or a missing input is the standard input, a missing
  `-o` the standard output. Certificates and keys are DER or PEM files (PEM is decoded by the
  tool; encrypted legacy PEM is not read: convert it to PKCS #8). Plain private keys are
  written with mode 0600.
- **Passwords.** `--password TEXT` or `--password-file FILE` (its first line). A password on
  the command line is visible to other users of the machine: prefer the file.
- **Certificate trust** (additions: `cert-verify --chain`/`--crl`, `verify --trust`,
  `ebxml-verify --trust`). The path ends at a built-in root (KISA RootCA 4, KISA RootCA 1,
  GPKIRootCA1) and every certificate on it, the root included, must be valid now.
  Intermediates come from `--chain` files (and, for `--trust`, from the signature's KeyInfo),
  CRLs from `--crl` files; both DER or PEM, one or several per file, and nothing is fetched.
  With CRLs, the certificate's issuer must have a current one among them. A refusal's exit code
  says which check refused: 220 path, 221 signature, 222 validity, 223 revocation, 224
  constraints, 225 an input that cannot be read, 226 a signature without a certificate.
- **Algorithms** are chosen by name; the names map to the library's selector numbers, and
  those to URIs as [algorithms.md](algorithms.md) lists them:

  | Option | Names (selector) |
  |---|---|
  | `--alg` (signature) | `hmac-sha1` (1), `rsa-sha1` (2), `kcdsa-sha1` (3), `kcdsa-has160` (4), `rsa-sha256` (5) |
  | `--alg`, additions | `rsa-sha224` (6), `rsa-sha384` (7), `rsa-sha512` (8), `rsa-pss-sha256` (9), `rsa-pss-sha384` (10), `rsa-pss-sha512` (11), `ecdsa-sha256` (12), `ecdsa-sha384` (13), `ecdsa-sha512` (14), `dsa-sha256` (15), `hmac-sha224` (16), `hmac-sha256` (17), `hmac-sha384` (18), `hmac-sha512` (19) |
  | `--c14n`, `--ref-c14n` | `none` (0), `c14n` (1), `c14n-comments` (2), `exc-c14n` (3), `exc-c14n-comments` (4), `c14n11` (5), `c14n11-comments` (6) |
  | `--digest` | `sha1` (1), `has160` (2), `sha256` (3), `sha224` (4), `sha384` (5), `sha512` (6) |
  | `--symm` (data encryption) | `3des` (1), `seed` (2), `neat` (3), `aria` (4); additions: `aes128-cbc` (5), `aes192-cbc` (6), `aes256-cbc` (7), `aes128-gcm` (8), `aes192-gcm` (9), `aes256-gcm` (10) |
  | `--transport` (key transport) | `kw-3des` (1), `rsa-1_5` (2), `rsa-oaep` (3); additions: `rsa-oaep11` (4, XML Encryption 1.1, SHA-256 and MGF1-SHA256), `kw-aes128` (5), `kw-aes192` (6), `kw-aes256` (7) |

  `soap-sign --c14n` takes the SOAP family's SignedInfo selectors: `exc-c14n` (0), `c14n` (1),
  `c14n-comments` (2), `c14n11` (3), `c14n11-comments` (4). EC and DSA signers give `--cert`
  and `--key` (unencrypted PKCS #8 or the traditional form, DER or PEM) like RSA ones; the
  HMAC algorithms take `--hmac-key`.

- **Failures.** The library's message goes to stderr as `vqxml COMMAND: Method > reason
  (status N)`, converted from EUC-KR to the terminal's encoding (the locale's code set; UTF-8
  in the C locale). The exit code is the status folded into 0-255:

  | Status | Exit code |
  |---|---|
  | 0 | 0 |
  | 1 to 63 (engine) | the same number |
  | 101xx, 102xx, 103xx, 104xx, 105xx | 100 + xx, 120 + xx, 140 + xx, 160 + xx, 180 + xx |
  | 11xxx, 12xxx | 200 + xx (11213 invalid signature → 213, 12011 → 211, 12020 → 220) |
  | anything else | 255 |
  | the tool's own: bad arguments, bad input data, unreadable input, unwritable output | 64, 65, 66, 73 |

  [status-codes.md](status-codes.md) lists every status with its exit code.

## Commands
EOF
    for command in $("$vqxml" --help | awk '/^Commands:/ {on = 1; next} on && /^  [a-z]/ {print $1} on && /^$/ {exit}'); do
        printf '\n### %s\n\n```text\n' "$command"
        "$vqxml" "$command" --help
        printf '```\n'
    done
} >docs/cli.md
