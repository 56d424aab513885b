#!/usr/bin/env bash
# The library's story told with the vqxml tool, one line per step.
# Usage: demo/story.sh [path/to/vqxml]   (default build/cli/vqxml)
#
# The demo PKI is the project's test PKI (tests/data/testpki: a test CA, RSA and
# KCDSA end entities, NPKI-style signPri.key files, password vqxml-test) plus the
# public KISA RootCA 4 certificate (demo/kisa-rootca4.crt.pem). Test keys only.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
vqxml=$(realpath "${1:-$root/build/cli/vqxml}")
pki=$root/tests/data/testpki
invoice=$root/tests/data/dsig/taxinvoice.xml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

passed=0
failed=0

# step EXPECTED_EXIT "what it shows" command... : runs the command, prints one line.
step() {
    local expected=$1 what=$2
    shift 2
    "$@" >"$work/out" 2>"$work/err"
    local status=$?
    if [ "$status" = "$expected" ]; then
        passed=$((passed + 1))
        printf '  ok    %s\n' "$what"
    else
        failed=$((failed + 1))
        printf '  FAIL  %s (exit %s, expected %s)\n' "$what" "$status" "$expected"
        sed 's/^/          /' "$work/err"
    fi
}

size() { printf '%s bytes' "$(wc -c <"$1" 2>/dev/null)"; }

# package ENVELOPE ATTACHMENT: an ebXML message, MIME multipart/related, on stdout.
package() {
    local b='----=_vqxml_demo'
    printf 'Content-Type: multipart/related; type="text/xml"; boundary="%s"; start="<envelope@vqxml.example>"\r\n' "$b"
    printf 'MIME-Version: 1.0\r\nSOAPAction: "ebXML"\r\n\r\n--%s\r\n' "$b"
    printf 'Content-Type: text/xml; charset=UTF-8\r\nContent-ID: <envelope@vqxml.example>\r\n\r\n'
    cat "$1"
    printf '\r\n--%s\r\nContent-Type: text/xml; charset=UTF-8\r\nContent-ID: <taxinvoice@vqxml.example>\r\n\r\n' "$b"
    cat "$2"
    printf '\r\n--%s--\r\n' "$b"
}

# same_xml A B: true if both files have the same canonical form.
same_xml() {
    /usr/bin/python3 -c 'import sys, xml.etree.ElementTree as E
sys.exit(E.canonicalize(from_file=sys.argv[1]) != E.canonicalize(from_file=sys.argv[2]))' "$1" "$2"
}

echo "vqxml $("$vqxml" version) — demo PKI: tests/data/testpki (test keys, password vqxml-test)"

echo "A tax invoice signed and verified"
step 0 "sign it with RSA-SHA256 as 홍길동 (ee-rsa), enveloped, exclusive C14N" \
    "$vqxml" sign --alg rsa-sha256 --cert "$pki/ee-rsa.crt.pem" --key "$pki/ee-rsa.key.pem" \
    -o invoice-rsa.xml "$invoice"
step 0 "verify it: $(size invoice-rsa.xml), the signer's certificate travels in KeyInfo" \
    "$vqxml" verify --signer-cert signer-rsa.der invoice-rsa.xml
sed 's/<GrandTotalAmount>1100000/<GrandTotalAmount>1900000/' invoice-rsa.xml >forged.xml
step 213 "a copy with a changed amount is refused (status 11213, exit 213)" \
    "$vqxml" verify forged.xml
step 0 "sign it with KCDSA-SHA1 straight from 김철수's NPKI signPri.key and its password" \
    "$vqxml" sign --alg kcdsa-sha1 --cert "$pki/ee-kcdsa1024.crt.der" --key "$pki/ee-kcdsa1024.signPri.key" \
    --password vqxml-test -o invoice-kcdsa.xml "$invoice"
step 0 "verify the KCDSA signature and take the invoice back without it" \
    "$vqxml" verify -o invoice-again.xml invoice-kcdsa.xml
step 0 "the invoice taken back is the original one, canonically" \
    same_xml "$invoice" invoice-again.xml

echo "The National Tax Service's recipe, on the KEC sample invoice"
kec=$root/tests/data/taxinvoice/kec-sample-unsigned.xml
step 0 "sign it by the recipe: RSA-SHA256, C14N, then the XPath without TaxInvoice and ExchangedDocument" \
    "$vqxml" sign --tax-invoice --cert "$pki/ee-rsa.crt.pem" --key "$pki/ee-rsa.key.pem" -o kec-signed.xml "$kec"
step 0 "verify it: $(size kec-signed.xml), in the canonical form Santuario and the NTS test bed use" \
    "$vqxml" verify kec-signed.xml
sed 's|<IssueDateTime>20090914220351|<IssueDateTime>20090915000000|' kec-signed.xml >kec-exchanged.xml
step 0 "ExchangedDocument is outside the signature by the recipe: changing it still verifies" \
    "$vqxml" verify kec-exchanged.xml
santuario_jars=/usr/share/java/xmlsec.jar:/usr/share/java/slf4j-api.jar:/usr/share/java/slf4j-nop.jar
if command -v javac >/dev/null && [ -f /usr/share/java/xmlsec.jar ] &&
    javac -nowarn -d "$work" -cp "$santuario_jars" "$root/tests/dsig/santuario/TaxInvoiceSantuario.java" 2>/dev/null; then
    step 0 "Apache Santuario 2.1.7 checks it against the recipe and accepts it" \
        java -cp "$work:$santuario_jars" TaxInvoiceSantuario verify kec-signed.xml
else
    echo "  skip  Apache Santuario's check (no JDK or no Santuario here)"
fi

echo "The invoice encrypted for its recipient"
step 0 "encrypt it with SEED for server.vqxml.test (ee-rsa-b), the key wrapped by RSA-OAEP" \
    "$vqxml" encrypt --symm seed --transport rsa-oaep --recipient "$pki/ee-rsa-b.crt.pem" --issuer-serial \
    -o invoice-enc.xml "$invoice"
step 0 "the recipient decrypts it with its key and gets the invoice back" \
    "$vqxml" decrypt --cert "$pki/ee-rsa-b.crt.pem" --key "$pki/ee-rsa-b.key.pem" -o invoice-dec.xml invoice-enc.xml
step 0 "the decrypted invoice is the original one, canonically" same_xml "$invoice" invoice-dec.xml
step 150 "홍길동 is not the recipient: refused by the serial number (status 10310)" \
    "$vqxml" decrypt --cert "$pki/ee-rsa.crt.pem" --key "$pki/ee-rsa.key.pem" invoice-enc.xml

echo "The invoice for a partner abroad: XML Signature 1.1 and XML Encryption 1.1"
step 0 "sign it with ECDSA on P-256 (SHA-256) and verify it" \
    sh -c '"$0" sign --alg ecdsa-sha256 --cert "$1" --key "$2" -o invoice-ec.xml "$3" && "$0" verify -q invoice-ec.xml' \
    "$vqxml" "$root/tests/data/dsig/signer-ec256.crt.der" "$root/tests/data/dsig/signer-ec256.key.pem" "$invoice"
step 0 "encrypt it with AES-256-GCM, the key wrapped by RSA-OAEP for ee-rsa-b" \
    "$vqxml" encrypt --symm aes256-gcm --transport rsa-oaep --recipient "$pki/ee-rsa-b.crt.pem" -o invoice-gcm.xml "$invoice"
if command -v xmlsec1 >/dev/null; then
    step 0 "libxmlsec1 (xmlsec1) decrypts it to the original invoice" \
        sh -c 'xmlsec1 --decrypt --privkey-pem "$0" --trusted-pem "$1" --output invoice-gcm-peer.xml invoice-gcm.xml 2>/dev/null' \
        "$pki/ee-rsa-b.key.pem" "$pki/ca-rsa.crt.pem"
    step 0 "and its plaintext is the invoice, canonically" same_xml "$invoice" invoice-gcm-peer.xml
else
    echo "  skip  libxmlsec1's decryption (no xmlsec1 here)"
fi

echo "A SOAP request secured and processed"
step 0 "sign the request with a WS-Security header (RSA-SHA256, BinarySecurityToken)" \
    "$vqxml" soap-sign --cert "$pki/ee-rsa.crt.pem" --key "$pki/ee-rsa.key.pem" -o request-signed.xml \
    "$here/soap-request.xml"
step 0 "encrypt its Body with ARIA for the server" \
    "$vqxml" soap-encrypt --symm aria --recipient "$pki/ee-rsa-b.crt.pem" --issuer-serial -o request-secured.xml \
    request-signed.xml
step 0 "the server decrypts, verifies and strips the header" \
    "$vqxml" soap-process --cert "$pki/ee-rsa-b.crt.pem" --key "$pki/ee-rsa-b.key.pem" -o request-plain.xml \
    request-secured.xml
step 0 "what the server gets is the request that was sent" same_xml "$here/soap-request.xml" request-plain.xml

echo "The invoice sent as an ebXML message"
package "$here/ebxml-envelope.xml" "$invoice" >message.mime
step 0 "sign the message: the SOAP envelope and the invoice attached as cid:taxinvoice" \
    "$vqxml" ebxml-sign --cert "$pki/ee-rsa.crt.der" --key "$pki/ee-rsa.key.der" -o signed.mime message.mime
step 0 "verify the signed package ($(size signed.mime)), attachment included" \
    "$vqxml" ebxml-verify signed.mime
sed 's/<GrandTotalAmount>1100000/<GrandTotalAmount>1900000/' signed.mime >forged.mime
step 213 "a package whose attached invoice was changed is refused" \
    "$vqxml" ebxml-verify forged.mime

echo "Private keys and certificates"
"$vqxml" key-random --password vqxml-test "$pki/ee-kcdsa1024.signPri.key" >random.b64 2>/dev/null
step 0 "open the signPri.key and take its identity-verification random: $(cat random.b64)" \
    cmp <(base64 -d random.b64 | od -An -v -tx1 | tr -d ' \n') <(tr -d '\n' <"$pki/ee-kcdsa1024.random.hex")
step 211 "a wrong password is refused, never answered with garbage" \
    "$vqxml" key-random --password wrong "$pki/ee-kcdsa1024.signPri.key"
step 0 "KISA RootCA 4 is one of the built-in trust anchors" \
    "$vqxml" cert-verify "$here/kisa-rootca4.crt.pem"
step 211 "the test CA is not: 홍길동's test certificate is refused with the reason" \
    "$vqxml" cert-verify signer-rsa.der

total=$((passed + failed))
if [ "$failed" = 0 ]; then
    echo "demo passed: all $total steps ok"
else
    echo "demo FAILED: $failed of $total steps failed"
    exit 1
fi
