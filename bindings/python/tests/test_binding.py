"""Every family through the binding with the test PKI, tampering, threads and many handles."""
import base64
import ctypes
import os
import pathlib
from concurrent.futures import ThreadPoolExecutor

import pytest

import vqxml
from vqxml import (Canonicalization, Cipher, Digest, KeyTransport, Signature, SoapCanonicalization, Target,
                   VqxmlError)

DATA = pathlib.Path(os.environ.get("VQXML_TEST_DATA", pathlib.Path(__file__).parents[3] / "tests" / "data"))


def data(name):
    path = DATA / name
    if not path.exists():
        pytest.fail(f"test input missing: {path}")
    return path.read_bytes()


INVOICE = data("taxinvoice/kec-sample-unsigned.xml")
RSA_CERT, RSA_KEY = data("testpki/ee-rsa.crt.der"), data("testpki/ee-rsa.key.der")
B_CERT, B_KEY = data("testpki/ee-rsa-b.crt.der"), data("testpki/ee-rsa-b.key.der")
AMOUNT, FORGED_AMOUNT = b"<GrandTotalAmount>110000000", b"<GrandTotalAmount>190000000"


def status(call, *args):
    with pytest.raises(VqxmlError) as raised:
        call(*args)
    assert raised.value.status in (10103, 10104) or " > " in raised.value.text
    return raised.value.status


def test_tax_invoice_signed_by_the_recipe_verifies_and_changes_are_caught():
    with vqxml.XmlSignature() as s:
        signed = s.sign_tax_invoice(INVOICE, RSA_CERT, RSA_KEY)
    # The recipe leaves ExchangedDocument out: changing it still verifies; the amount does not.
    exchanged = signed.replace(b"<IssueDateTime>20090914220351", b"<IssueDateTime>20090915000000")
    with vqxml.XmlSignature() as v:
        for good in (signed, exchanged):
            v.load_signed(good)
            v.verify()
            assert v.canonical_reading() == vqxml.CanonicalReading.SANTUARIO
            assert v.certificate() == RSA_CERT
            assert b"Signature" not in v.document()
        v.load_signed(signed.replace(AMOUNT, FORGED_AMOUNT))
        assert status(v.verify) == VqxmlError.NOT_VERIFIED
        v.load_signed(signed)
        v.verify()
        assert status(v.verify_signer_certificate) == 12020  # a test certificate: no Korean root
        assert status(v.load_signed, b"<unclosed>") == 10105
        assert status(v.verify) == 10200


def test_kcdsa_from_an_npki_key_hmac_and_certificates():
    npki = data("testpki/ee-kcdsa1024.signPri.key")
    with vqxml.PrivateKeys() as keys, vqxml.XmlSignature() as s, vqxml.XmlSignature() as v:
        random = base64.b64decode(keys.random("vqxml-test", npki))
        assert random.hex() == data("testpki/ee-kcdsa1024.random.hex").decode().strip()
        assert status(keys.decrypt, "wrong", npki) == 12011
        key = keys.decrypt("vqxml-test", npki)

        s.load(INVOICE)
        s.signature_method(Signature.KCDSA_SHA1, Canonicalization.EXC_C14N)
        s.add_reference(None, Digest.SHA1, Canonicalization.NONE, vqxml.ENVELOPED_XPATH)
        with pytest.raises(ValueError):
            s.set_key_name("김철수\0cut")
        s.set_key_name("김철수")
        s.set_signer(data("testpki/ee-kcdsa1024.crt.der"), key)
        v.load_signed(s.sign())
        v.verify()
        assert v.key_name() == "김철수"

        secret = b"a shared secret of 32 bytes!!!!!"
        s.load(None)
        s.signature_method(Signature.HMAC_SHA1, Canonicalization.C14N)
        s.append_object("payload", b"<Note>enveloping</Note>")
        s.add_reference("#payload", Digest.SHA256, Canonicalization.NONE)
        s.set_hmac_key(secret)
        signed = s.sign()
        for key, expected in ((secret, 0), (b"another secret of 32 bytes!!!!!!", VqxmlError.NOT_VERIFIED)):
            v.load_signed(signed)
            v.set_hmac_key(key)
            if expected:
                assert status(v.verify) == expected
            else:
                v.verify()
                assert v.document().endswith(b">enveloping</Note>")
    with vqxml.Certificates() as c:
        with pytest.raises(VqxmlError) as refused:  # naming the certificate, its Korean name in EUC-KR
            c.verify(RSA_CERT)
        assert refused.value.status == 12011 and "(CN=홍길동()0012345RSA,OU=개발팀" in refused.value.text
        assert status(c.verify_chain, RSA_CERT, data("testpki/ca-rsa.crt.pem")) == 12020


def test_encrypted_for_one_recipient_opens_for_it_alone():
    with vqxml.XmlEncryption() as e:
        e.load(INVOICE)
        e.set_symmetric_algorithm(Cipher.SEED)
        e.encrypt_element(None, Target.ELEMENT)
        e.name_issuer_serial()
        e.add_recipient(B_CERT, KeyTransport.RSA_OAEP)
        encrypted = e.encrypt()
    assert b"GrandTotalAmount" not in encrypted
    with vqxml.XmlEncryption() as d:
        d.load_encrypted(encrypted)
        assert d.next_encrypted_key()
        assert d.serial_number() == "4098"
        assert status(d.unwrap_key, RSA_CERT, RSA_KEY) == 10310
        d.unwrap_key(B_CERT, B_KEY)
        assert AMOUNT + b"<" in d.decrypt()
        d.load_encrypted(encrypted.replace(b"CipherValue>", b"CipherValue>AAAA"))
        d.next_encrypted_key()
        with pytest.raises(VqxmlError):
            d.unwrap_key(B_CERT, B_KEY)
            d.decrypt()


def test_soap_message_signed_encrypted_and_processed():
    envelope = data("ebxml/envelope.xml")
    with vqxml.SoapSecurity() as s:
        s.load(envelope)
        s.signature_method(Signature.RSA_SHA256, SoapCanonicalization.EXC_C14N)
        s.add_reference(None, Digest.SHA256, Canonicalization.EXC_C14N)
        s.set_signer(RSA_CERT, RSA_KEY)
        s.load(s.sign())
        s.set_symmetric_algorithm(Cipher.ARIA)
        s.encrypt_element(None, Target.CONTENT)
        s.name_issuer_serial()
        s.add_recipient(B_CERT, KeyTransport.RSA_OAEP)
        secured = s.encrypt()
    with vqxml.SoapSecurity() as r:
        r.load_secured(secured)
        assert r.is_signed() and r.certificate() == RSA_CERT
        assert r.next_encrypted_key()
        r.unwrap_key(B_CERT, B_KEY)
        assert b"cid:order@example.kr" in r.process()
        soap = "{http://schemas.xmlsoap.org/soap/envelope/}"
        assert r.signed_parts() == [f"/{soap}Envelope/{soap}Body"]
    with vqxml.SoapSecurity() as r:
        r.load_secured(secured)
        r.is_signed()
        assert r.next_encrypted_key()
        assert status(r.process) == 10511
        assert status(r.load, b"<a/>") == 10401


def ebxml_package(envelope, attachment):
    b = b"----=_vqxml_python"
    return (b'Content-Type: multipart/related; type="text/xml"; boundary="' + b
            + b'"; start="<envelope@vqxml.example>"\r\nMIME-Version: 1.0\r\n\r\n--' + b
            + b"\r\nContent-Type: text/xml; charset=UTF-8\r\nContent-ID: <envelope@vqxml.example>\r\n\r\n"
            + envelope + b"\r\n--" + b + b"\r\nContent-Type: text/xml; charset=UTF-8\r\n"
            + b"Content-ID: <order@example.kr>\r\n\r\n" + attachment + b"\r\n--" + b + b"--\r\n")


def test_ebxml_package_signed_with_its_attachment():
    with vqxml.EbXml() as s:
        s.load(ebxml_package(data("ebxml/envelope.xml"), INVOICE))
        s.signature_method(Signature.RSA_SHA256, Canonicalization.EXC_C14N)
        s.add_reference(None, Digest.SHA256, Canonicalization.NONE, vqxml.ENVELOPED_XPATH)
        s.name_subject()
        s.name_issuer_serial()
        s.set_signer(RSA_CERT, RSA_KEY)
        signed = s.sign()
    with vqxml.EbXml() as v:
        v.load_signed(signed)
        v.verify()
        assert v.serial_number() == "4097" and "홍길동" in v.subject_name()
        assert "VQXML Test Root CA" in v.issuer_name() and v.certificate() == RSA_CERT
        v.load_signed(signed.replace(AMOUNT, FORGED_AMOUNT))
        assert status(v.verify) == VqxmlError.NOT_VERIFIED
        assert status(v.load_signed, b"") == 10104


class _MallInfo2(ctypes.Structure):
    _fields_ = [(name, ctypes.c_size_t) for name in
                ("arena", "ordblks", "smblks", "hblks", "hblkhd", "usmblks", "fsmblks", "uordblks", "fordblks",
                 "keepcost")]


def malloc_bytes():
    libc = ctypes.CDLL("libc.so.6")
    libc.mallinfo2.restype = _MallInfo2
    info = libc.mallinfo2()
    return info.uordblks + info.hblkhd


def test_rounds_across_the_boundary_leave_nothing_behind():
    """Handles are finished and results copied, not kept: over rounds of signing, verifying,
    encrypting, decrypting, getters and failures, malloc does not grow in every stretch of 50
    rounds, as a handle or result left behind each round would make it."""
    forged, marks = None, []
    with vqxml.Handle():
        for round_ in range(301):
            if round_ % 50 == 0 and round_ >= 100:
                marks.append(malloc_bytes())
            with vqxml.XmlSignature() as s, vqxml.XmlSignature() as v, vqxml.XmlEncryption() as e, \
                    vqxml.XmlEncryption() as d:
                signed = s.sign_tax_invoice(INVOICE, RSA_CERT, RSA_KEY)
                forged = forged or signed.replace(AMOUNT, FORGED_AMOUNT)
                v.load_signed(signed)
                v.verify()
                v.certificate(), v.document()
                v.load_signed(forged)
                assert status(v.verify) == VqxmlError.NOT_VERIFIED
                e.load(INVOICE)
                e.set_symmetric_algorithm(Cipher.SEED)
                e.encrypt_element(None, Target.ELEMENT)
                e.add_recipient(RSA_CERT, KeyTransport.RSA_OAEP)
                d.load_encrypted(e.encrypt())
                d.next_encrypted_key()
                d.unwrap_key(RSA_CERT, RSA_KEY)
                d.decrypt()
    least = min(b - a for a, b in zip(marks, marks[1:]))
    assert least < 64 << 10, f"malloc grew by at least {least} bytes in every 50 rounds"


def test_handles_on_many_threads_and_thousands_of_handles():
    def work(thread):
        verified = 0
        for i in range(25):
            with vqxml.XmlSignature() as s, vqxml.XmlSignature() as v:
                signed = s.sign_tax_invoice(INVOICE, RSA_CERT, RSA_KEY)
                v.load_signed(signed if (i + thread) % 2 == 0 else signed.replace(AMOUNT, FORGED_AMOUNT))
                try:
                    v.verify()
                    verified += 1
                except VqxmlError as e:
                    assert e.status == VqxmlError.NOT_VERIFIED
        return verified

    with ThreadPoolExecutor(8) as pool:
        assert sum(pool.map(work, range(8))) == 100

    # Handles finished by close and by collection (one kept open, so that the engines stay up),
    # and a closed one refused.
    keeper = vqxml.Handle()
    for _ in range(5000):
        with vqxml.XmlEncryption() as e:
            assert status(e.encrypt_element, None, Target.ELEMENT) == 10106
        vqxml.Certificates().version()
    keeper.close()
    closed = vqxml.Certificates()
    assert closed.version().startswith("V")
    closed.close()
    closed.close()
    with pytest.raises(ValueError):
        closed.version()
    with vqxml.XmlSignature() as s:
        assert s.document() is None
