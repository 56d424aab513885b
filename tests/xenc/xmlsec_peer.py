#!/usr/bin/python3
"""libxmlsec1 (through python3-xmlsec) as the other side of XML Encryption.

usage: xmlsec_peer.py unwrap DOCUMENT KEYFILE KIND OUTFILE
         writes the session key of the document's first EncryptedKey
       xmlsec_peer.py encrypt DOCUMENT KEYFILE KIND DATA TRANSPORT OUTFILE
         encrypts the first element named Card (in any namespace) with a new
         session key for DATA (aes128-cbc ... aes256-gcm, tripledes-cbc), wrapped
         by TRANSPORT (rsa-1_5, rsa-oaep-mgf1p, kw-aes128 ...) in an EncryptedKey
         inside the EncryptedData's KeyInfo
  KIND rsa: KEYFILE is a DER private key (unwrap) or DER certificate (encrypt);
  des or aes: KEYFILE holds the raw key-encryption key.
"""
import sys

import xmlsec
from lxml import etree

C = xmlsec.constants
DATA = {
    "aes128-cbc": (C.TransformAes128Cbc, C.KeyDataAes, 128),
    "aes192-cbc": (C.TransformAes192Cbc, C.KeyDataAes, 192),
    "aes256-cbc": (C.TransformAes256Cbc, C.KeyDataAes, 256),
    "aes128-gcm": (C.TransformAes128Gcm, C.KeyDataAes, 128),
    "aes192-gcm": (C.TransformAes192Gcm, C.KeyDataAes, 192),
    "aes256-gcm": (C.TransformAes256Gcm, C.KeyDataAes, 256),
    "tripledes-cbc": (C.TransformDes3Cbc, C.KeyDataDes, 192),
}
TRANSPORTS = {
    "rsa-1_5": C.TransformRsaPkcs1,
    "rsa-oaep-mgf1p": C.TransformRsaOaep,
    "kw-aes128": C.TransformKWAes128,
    "kw-aes192": C.TransformKWAes192,
    "kw-aes256": C.TransformKWAes256,
    "kw-tripledes": C.TransformKWDes3,
}


def manager_with(key_file, kind, public):
    manager = xmlsec.KeysManager()
    if kind == "rsa":
        key = xmlsec.Key.from_file(key_file, C.KeyDataFormatCertDer if public else C.KeyDataFormatDer)
    else:
        with open(key_file, "rb") as f:
            key = xmlsec.Key.from_binary_data(C.KeyDataDes if kind == "des" else C.KeyDataAes, f.read())
    manager.add_key(key)
    return manager


def unwrap(document, key_file, kind, out_file):
    context = xmlsec.EncryptionContext(manager_with(key_file, kind, False))
    encrypted_key = etree.parse(document).find(".//{http://www.w3.org/2001/04/xmlenc#}EncryptedKey")
    with open(out_file, "wb") as f:
        f.write(context.decrypt(encrypted_key))


def encrypt(document, key_file, kind, data, transport, out_file):
    tree = etree.parse(document)
    node = tree.getroot().find(".//{*}Card")
    data_transform, key_data, bits = DATA[data]
    template = xmlsec.template.encrypted_data_create(tree.getroot(), data_transform, type=C.TypeEncElement, ns="xenc")
    xmlsec.template.encrypted_data_ensure_cipher_value(template)
    key_info = xmlsec.template.encrypted_data_ensure_key_info(template, ns="dsig")
    encrypted_key = xmlsec.template.add_encrypted_key(key_info, TRANSPORTS[transport])
    xmlsec.template.encrypted_data_ensure_cipher_value(encrypted_key)
    context = xmlsec.EncryptionContext(manager_with(key_file, kind, True))
    context.key = xmlsec.Key.generate(key_data, bits, C.KeyDataTypeSession)
    context.encrypt_xml(template, node)
    tree.write(out_file, xml_declaration=True, encoding="UTF-8")


if __name__ == "__main__":
    if sys.argv[1] == "unwrap":
        unwrap(*sys.argv[2:6])
    else:
        encrypt(*sys.argv[2:8])
