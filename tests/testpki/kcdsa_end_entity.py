#!/usr/bin/python3
"""Makes a KCDSA key pair on given domain parameters and a certificate for it signed
by the RSA test CA, for the test PKI (generate.sh calls it):

  kcdsa_end_entity.py PARAMS_DER CA_CRT_DER CA_KEY_PEM SUBJECT SERIAL DAYS PASSWORD OUT

PARAMS_DER holds DSA-style domain parameters SEQUENCE { p, q, g }; SUBJECT is
"/C=KR/O=.../CN=..." in UTF-8. Writes OUT.crt.der, OUT.crt.pem, OUT.key.der (PKCS #8
PrivateKeyInfo), OUT.key.enc.der (PBES2, PBKDF2-HMAC-SHA256 and SEED-CBC under
PASSWORD) and OUT.signPri.key (the NPKI form: the PrivateKeyInfo with a fresh
identity-verification random, pbeWithSHA1AndSEED-CBC), that random in OUT.random.hex.
"""
import base64
import datetime
import hashlib
import secrets
import sys
import textwrap
from pathlib import Path

import der
from make_kcdsa_certs import SHA256_WITH_RSA, kcdsa_public_key, rsa_signed, tbs
from make_npki_keys import kcdsa_private_key_info, pbes2_seed_form, seed_sha1_form, with_random

ATTRIBUTES = {"C": "2.5.4.6", "O": "2.5.4.10", "OU": "2.5.4.11", "CN": "2.5.4.3"}


def subject_name(text):
    rdns = []
    for part in text.strip("/").split("/"):
        kind, value = part.split("=", 1)
        rdns.append(der.set_of(der.seq(der.oid(ATTRIBUTES[kind]),
                                       der.tlv(0x13 if kind == "C" else 0x0C, value.encode()))))
    return der.seq(*rdns)


def asn1_time(moment):
    if moment.year < 2050:
        return der.tlv(0x17, moment.strftime("%y%m%d%H%M%SZ").encode())
    return der.tlv(0x18, moment.strftime("%Y%m%d%H%M%SZ").encode())


def key_id(public_key_info):
    """SHA-1 of the subjectPublicKey bits, as openssl's "hash" key identifiers."""
    return hashlib.sha1(der.value(der.children(public_key_info)[1])[1:]).digest()


def main(params_der, ca_der, ca_key, subject, serial, days, password, out):
    p, q, g = (int.from_bytes(der.value(n), "big") for n in der.children(Path(params_der).read_bytes()))
    x = secrets.randbelow(q - 1) + 1
    key = {"p": p, "q": q, "g": g, "x": x, "y": pow(g, pow(x, -1, q), p)}
    ca = der.children(der.children(Path(ca_der).read_bytes())[0])
    public_key = kcdsa_public_key(key)
    ext = lambda type_oid, value, critical=False: der.seq(
        der.oid(type_oid), *([der.boolean(True)] if critical else []), der.octets(value))
    extensions = der.context(3, der.seq(
        ext("2.5.29.19", der.seq(), True),
        ext("2.5.29.15", b"\x03\x02\x06\xc0", True),  # digitalSignature, nonRepudiation
        ext("2.5.29.14", der.octets(key_id(public_key))),
        ext("2.5.29.35", der.seq(der.context(0, key_id(ca[6]), constructed=False)))))
    now = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
    validity = der.seq(asn1_time(now), asn1_time(now + datetime.timedelta(days=int(days))))
    body, algorithm = tbs(int(serial), SHA256_WITH_RSA, ca[5], subject_name(subject), public_key, extensions,
                          validity)
    cert = rsa_signed(body, algorithm, ca_key)
    Path(out + ".crt.der").write_bytes(cert)
    pem = "\n".join(textwrap.wrap(base64.b64encode(cert).decode(), 64))
    Path(out + ".crt.pem").write_text("-----BEGIN CERTIFICATE-----\n" + pem + "\n-----END CERTIFICATE-----\n")
    info = kcdsa_private_key_info(key)
    Path(out + ".key.der").write_bytes(info)
    secret = password.encode()
    Path(out + ".key.enc.der").write_bytes(
        pbes2_seed_form(info, secrets.token_bytes(8), 2048, secrets.token_bytes(16), secret))
    random = secrets.token_bytes(20)
    Path(out + ".signPri.key").write_bytes(seed_sha1_form(with_random(info, random), secrets.token_bytes(8), 2048,
                                                          secret))
    Path(out + ".random.hex").write_text(random.hex() + "\n")


if __name__ == "__main__":
    if len(sys.argv) != 9:
        raise SystemExit(__doc__)
    main(*sys.argv[1:])
