#!/usr/bin/python3
"""Unwraps the session key of a document's first EncryptedKey with libxmlsec1
(through python3-xmlsec) and writes it to OUTFILE.

usage: xmlsec_unwrap.py DOCUMENT KEYFILE rsa|des OUTFILE
  rsa: KEYFILE is a DER private key; des: KEYFILE holds the raw 24-byte
  key-encryption key.
"""
import sys

import xmlsec
from lxml import etree


def main():
    document, key_file, kind, out_file = sys.argv[1:5]
    manager = xmlsec.KeysManager()
    if kind == "rsa":
        key = xmlsec.Key.from_file(key_file, xmlsec.constants.KeyDataFormatDer)
    else:
        with open(key_file, "rb") as f:
            key = xmlsec.Key.from_binary_data(xmlsec.constants.KeyDataDes, f.read())
    manager.add_key(key)
    context = xmlsec.EncryptionContext(manager)
    encrypted_key = etree.parse(document).find(".//{http://www.w3.org/2001/04/xmlenc#}EncryptedKey")
    with open(out_file, "wb") as f:
        f.write(context.decrypt(encrypted_key))


if __name__ == "__main__":
    main()
