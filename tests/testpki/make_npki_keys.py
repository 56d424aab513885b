#!/usr/bin/python3
"""Makes the private-key fixtures of the toolkit tests, in the forms Korean NPKI key
files take, from a plain RSA key (PEM PKCS #8) and the KCDSA parameters of the
shared test vectors:

  user_key_plain.der       the RSA PrivateKeyInfo with a randomNum attribute
  user_random.bin          that attribute's value (20 bytes)
  user_key_seedsha1.der    the same, pbeWithSHA1AndSEED-CBC (1.2.410.200004.1.15)
  user_key_pbes2_seed.der  the same, PBES2 / PBKDF2-HMAC-SHA256 / SEED-CBC
  kcdsa_key_seedsha1.der   a KCDSA PrivateKeyInfo with randomNum, 1.15 form
  kcdsa_random.bin         its random
  openssl_seed.der         `openssl pkcs8 -topk8 -v2 seed-cbc` of the RSA key (no attribute)
  openssl_aes256.der       `openssl pkcs8 -topk8 -v2 aes-256-cbc` of the RSA key
  bad_*.der                encrypted keys with hostile parameters
The password of every encrypted key is PASSWORD below. SEED and AES come from the
openssl CLI; PBKDF1 and PBKDF2 from hashlib. The 1.15 derivation is checked here
against the shared vectors before it is used.

usage: make_npki_keys.py RSA_KEY_PEM OUTPUT_DIR VECTORS_FILE KCDSA_VECTORS_FILE
"""
import hashlib
import subprocess
import sys
from pathlib import Path

import der
import vectors
from make_kcdsa_certs import kcdsa_algorithm

PASSWORD = b"vqxml-test-1234"
PBE_SEED_SHA1 = "1.2.410.200004.1.15"
PBES2, PBKDF2 = "1.2.840.113549.1.5.13", "1.2.840.113549.1.5.12"
HMAC_SHA256 = "1.2.840.113549.2.9"
SEED_CBC = "1.2.410.200004.1.4"
RANDOM_NUM = "1.2.410.200004.10.1.1.3"
LEGACY = ["-provider", "legacy", "-provider", "default"]


def openssl(*args, data=None):
    return subprocess.run(["openssl", *args], input=data, capture_output=True, check=True).stdout


def pbkdf1_sha1(password, salt, iterations):
    dk = hashlib.sha1(password + salt).digest()
    for _ in range(iterations - 1):
        dk = hashlib.sha1(dk).digest()
    return dk


def seed_sha1_key_iv(password, salt, iterations):
    dk = pbkdf1_sha1(password, salt, iterations)
    return dk[:16], hashlib.sha1(dk[16:20]).digest()[:16]


def cbc_encrypt(cipher, key, iv, plain):
    return openssl("enc", "-e", "-" + cipher, "-K", key.hex(), "-iv", iv.hex(), *LEGACY, data=plain)


def check_against_vectors(path):
    records = vectors.records(path)
    for f in records:
        key, iv = seed_sha1_key_iv(bytes.fromhex(f["password"]), bytes.fromhex(f["salt"]),
                                   int(f["iterations"]))
        assert (key.hex(), iv.hex()) == (f["key"], f["iv"]), "PBKDF1 derivation disagrees"
        assert cbc_encrypt("seed-cbc", key, iv, bytes.fromhex(f["plaintext"])).hex() == f["ciphertext"]
    assert records


def with_random(private_key_info, random):
    """The PrivateKeyInfo with attributes [0] { randomNum SET { BIT STRING } } added."""
    attribute = der.seq(der.oid(RANDOM_NUM), der.set_of(der.bits(random)))
    return der.seq(*der.children(private_key_info), der.context(0, attribute))


def encrypted_key_info(algorithm, ciphertext):
    return der.seq(algorithm, der.octets(ciphertext))


def seed_sha1_form(plain, salt, iterations, password=PASSWORD):
    key, iv = seed_sha1_key_iv(password, salt, iterations)
    algorithm = der.seq(der.oid(PBE_SEED_SHA1), der.seq(der.octets(salt), der.integer(iterations)))
    return encrypted_key_info(algorithm, cbc_encrypt("seed-cbc", key, iv, plain))


def pbes2_seed_form(plain, salt, iterations, iv, password=PASSWORD):
    key = hashlib.pbkdf2_hmac("sha256", password, salt, iterations, 16)
    kdf = der.seq(der.oid(PBKDF2), der.seq(der.octets(salt), der.integer(iterations),
                                           der.seq(der.oid(HMAC_SHA256), der.null())))
    algorithm = der.seq(der.oid(PBES2), der.seq(kdf, der.seq(der.oid(SEED_CBC), der.octets(iv))))
    return encrypted_key_info(algorithm, cbc_encrypt("seed-cbc", key, iv, plain))


def kcdsa_private_key_info(k):
    """The PrivateKeyInfo of the KCDSA key k (p, q, g, x)."""
    return der.seq(der.integer(0), kcdsa_algorithm(k), der.octets(der.integer(k["x"] % k["q"])))


def hostile_forms(plain):
    """Well-formed EncryptedPrivateKeyInfos the toolkit must refuse cleanly."""
    salt = bytes(range(8))
    ct = seed_sha1_form(plain, salt, 2048)
    data = der.children(ct)[1]
    params = lambda iterations: der.seq(der.octets(salt), der.integer(iterations))
    return {
        "bad_unknown_pbe.der": der.seq(der.seq(der.oid("1.2.3.4.5"), params(2048)), data),
        "bad_bare_seed.der": der.seq(der.seq(der.oid(SEED_CBC), der.octets(salt * 2)), data),
        "bad_iterations_zero.der": der.seq(der.seq(der.oid(PBE_SEED_SHA1), params(0)), data),
        "bad_iterations_huge.der": der.seq(der.seq(der.oid(PBE_SEED_SHA1), params(10 ** 12)), data),
        "bad_iterations_negative.der": der.seq(der.seq(der.oid(PBE_SEED_SHA1), params(-1)), data),
        "bad_empty_salt.der": der.seq(der.seq(der.oid(PBE_SEED_SHA1),
                                              der.seq(der.octets(b""), der.integer(2048))), data),
    }


def main(rsa_key_pem, out_dir, vectors_file, kcdsa_vectors):
    check_against_vectors(vectors_file)
    out = Path(out_dir)
    rsa = openssl("pkcs8", "-topk8", "-nocrypt", "-outform", "DER", "-in", rsa_key_pem)
    random = hashlib.sha1(b"vqxml identity random").digest()
    plain = with_random(rsa, random)
    (out / "user_key_plain.der").write_bytes(plain)
    (out / "user_random.bin").write_bytes(random)
    (out / "user_key_seedsha1.der").write_bytes(seed_sha1_form(plain, bytes.fromhex("a1b2c3d4e5f60718"), 2048))
    (out / "user_key_pbes2_seed.der").write_bytes(
        pbes2_seed_form(plain, bytes.fromhex("0f1e2d3c4b5a6978"), 2048, bytes(range(16))))

    kcdsa_random = hashlib.sha1(b"vqxml KCDSA identity random").digest()
    kcdsa = with_random(kcdsa_private_key_info(vectors.kcdsa_domain(kcdsa_vectors)), kcdsa_random)
    (out / "kcdsa_key_seedsha1.der").write_bytes(seed_sha1_form(kcdsa, bytes.fromhex("1122334455667788"), 1024))
    (out / "kcdsa_random.bin").write_bytes(kcdsa_random)

    password = "pass:" + PASSWORD.decode()
    for name, cipher, prf in (("openssl_seed.der", "seed-cbc", "hmacWithSHA1"),
                              ("openssl_aes256.der", "aes-256-cbc", "hmacWithSHA256")):
        (out / name).write_bytes(openssl("pkcs8", "-topk8", "-v2", cipher, "-v2prf", prf, *LEGACY,
                                         "-outform", "DER", "-passout", password, "-in", rsa_key_pem))
    for name, data in hostile_forms(plain).items():
        (out / name).write_bytes(data)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        raise SystemExit(__doc__)
    main(*sys.argv[1:])
