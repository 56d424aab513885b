#!/usr/bin/python3
"""Makes certificates whose own key is KCDSA, which the openssl CLI cannot write:

  kcdsa_leaf.der          KCDSA end-entity key, signed (sha256WithRSAEncryption)
                          by the RSA test intermediate
  kcdsa_ca.der            KCDSA CA key, signed by the RSA test intermediate
  kcdsa_under_kcdsa.der   KCDSA end-entity key "issued" by kcdsa_ca; its signature
                          is a placeholder, since the toolkit refuses KCDSA issuers
                          before it would look at it
  rsa_under_kcdsa.der     the same for an RSA end-entity key (the test leaf's)

The KCDSA public key (p, q, g, y) is that of the KCDSA test vectors (tests/data/vectors).

usage: make_kcdsa_certs.py INTERMEDIATE_DER INTERMEDIATE_KEY_PEM LEAF_DER KCDSA_VECTORS OUTPUT_DIR
"""
import subprocess
import sys
from pathlib import Path

import der
import vectors

KCDSA = "1.2.410.200004.1.1"
KCDSA_WITH_SHA1 = "1.2.410.200004.1.9"
SHA256_WITH_RSA = "1.2.840.113549.1.1.11"


def kcdsa_algorithm(k):
    return der.seq(der.oid(KCDSA), der.seq(der.integer(k["p"]), der.integer(k["q"]), der.integer(k["g"])))


def kcdsa_public_key(k):
    """The SubjectPublicKeyInfo of the key k (p, q, g, y)."""
    return der.seq(kcdsa_algorithm(k), der.bits(der.integer(k["y"])))


def name(common_name):
    attribute = lambda type_oid, value: der.set_of(der.seq(der.oid(type_oid), value))
    return der.seq(attribute("2.5.4.6", der.tlv(0x13, b"KR")),
                   attribute("2.5.4.10", der.tlv(0x0C, b"vqxml test")),
                   attribute("2.5.4.3", der.tlv(0x0C, common_name.encode())))


def extensions(ca):
    basic = der.seq(der.boolean(True)) if ca else der.seq()
    usage = b"\x03\x02\x01\x06" if ca else b"\x03\x02\x07\x80"  # keyCertSign+cRLSign / digitalSignature
    ext = lambda type_oid, value: der.seq(der.oid(type_oid), der.boolean(True), der.octets(value))
    return der.context(3, der.seq(ext("2.5.29.19", basic), ext("2.5.29.15", usage)))


FIXED_VALIDITY = der.seq(der.tlv(0x17, b"200101000000Z"), der.tlv(0x18, b"20991231235959Z"))


def tbs(serial, signature_oid, issuer, subject, public_key, exts, validity=FIXED_VALIDITY):
    signature = der.seq(der.oid(signature_oid), der.null()) if signature_oid == SHA256_WITH_RSA \
        else der.seq(der.oid(signature_oid))
    return der.seq(der.context(0, der.integer(2)), der.integer(serial), signature, issuer, validity,
                   subject, public_key, exts), signature


def certificate(body, signature_algorithm, signature):
    return der.seq(body, signature_algorithm, der.bits(signature))


def rsa_signed(body, signature_algorithm, key_pem):
    signature = subprocess.run(["openssl", "dgst", "-sha256", "-sign", key_pem], input=body,
                               capture_output=True, check=True).stdout
    return certificate(body, signature_algorithm, signature)


def main(intermediate_der, intermediate_key, leaf_der, vectors_file, out_dir):
    out = Path(out_dir)
    issuer = der.children(der.children(Path(intermediate_der).read_bytes())[0])[5]  # its subject
    key = kcdsa_public_key(vectors.kcdsa_domain(vectors_file))
    for file, serial, subject, ca in (("kcdsa_leaf.der", 0x2001, "vqxml KCDSA Leaf", False),
                                      ("kcdsa_ca.der", 0x2002, "vqxml KCDSA CA", True)):
        body, algorithm = tbs(serial, SHA256_WITH_RSA, issuer, name(subject), key, extensions(ca))
        (out / file).write_bytes(rsa_signed(body, algorithm, intermediate_key))
    rsa_key = der.children(der.children(Path(leaf_der).read_bytes())[0])[6]
    placeholder = der.seq(der.integer(1), der.integer(1))
    for file, serial, subject, subject_key in (
            ("kcdsa_under_kcdsa.der", 0x2003, "vqxml KCDSA Under KCDSA", key),
            ("rsa_under_kcdsa.der", 0x2004, "vqxml RSA Under KCDSA", rsa_key)):
        body, algorithm = tbs(serial, KCDSA_WITH_SHA1, name("vqxml KCDSA CA"), name(subject),
                              subject_key, extensions(False))
        (out / file).write_bytes(certificate(body, algorithm, placeholder))


if __name__ == "__main__":
    if len(sys.argv) != 6:
        raise SystemExit(__doc__)
    main(*sys.argv[1:])
