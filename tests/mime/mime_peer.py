#!/usr/bin/python3
"""Peer for the MIME interop tests: Python's standard library (base64, quopri,
email) encodes and decodes the same inputs as the C++ library.

    mime_peer.py codecs DIR   for each N.in: N.py.b64, N.py.qp (Python's
                              encodings) and N.our.b64.dec, N.our.qp.dec (Python's
                              decodings of N.our.b64, N.our.qp)
    mime_peer.py words DIR    for each N.txt (UTF-8): N.py.hdr (RFC 2047 words by
                              email.header) and N.our.hdr.dec (decoding of N.our.hdr)
    mime_peer.py message DIR  leaves of our.eml into our/I.{type,cid,bin}; writes
                              py.eml with its leaves in py/I.{type,cid,bin}
"""
import base64
import email
import email.charset
import email.header
import email.policy
import pathlib
import quopri
import sys
from email.mime.application import MIMEApplication
from email.mime.multipart import MIMEMultipart
from email.mime.text import MIMEText


def codecs(d):
    for src in sorted(d.glob('*.in')):
        stem = src.name[:-3]
        data = src.read_bytes()
        (d / f'{stem}.py.b64').write_bytes(base64.encodebytes(data))
        # Python breaks QP lines with "=\n" unless the text uses CR LF; a soft
        # break is always "=" CR LF on the wire.
        qp = quopri.encodestring(data).replace(b'=\n', b'=\r\n')
        (d / f'{stem}.py.qp').write_bytes(qp)
        (d / f'{stem}.our.b64.dec').write_bytes(
            base64.b64decode((d / f'{stem}.our.b64').read_bytes()))
        (d / f'{stem}.our.qp.dec').write_bytes(
            quopri.decodestring((d / f'{stem}.our.qp').read_bytes()))


def words(d):
    for src in sorted(d.glob('*.txt')):
        stem = src.name[:-4]
        text = src.read_bytes().decode('utf-8')
        encoded = email.header.Header(text, 'utf-8').encode()
        (d / f'{stem}.py.hdr').write_bytes(encoded.encode('ascii'))
        ours = (d / f'{stem}.our.hdr').read_bytes().decode('ascii')
        decoded = str(email.header.make_header(email.header.decode_header(ours)))
        (d / f'{stem}.our.hdr.dec').write_bytes(decoded.encode('utf-8'))


def write_leaves(msg, out):
    out.mkdir(exist_ok=True)
    leaves = [part for part in msg.walk() if not part.is_multipart()]
    for i, part in enumerate(leaves):
        (out / f'{i}.type').write_bytes(part.get_content_type().encode())
        (out / f'{i}.cid').write_bytes((part.get('Content-ID') or '').encode())
        (out / f'{i}.bin').write_bytes(part.get_payload(decode=True) or b'')


def message(d):
    ours = email.message_from_bytes((d / 'our.eml').read_bytes(), policy=email.policy.compat32)
    write_leaves(ours, d / 'our')
    (d / 'our.subject').write_bytes(
        str(email.header.make_header(email.header.decode_header(ours['Subject']))).encode('utf-8'))

    qp = email.charset.Charset('utf-8')
    qp.body_encoding = email.charset.QP
    msg = MIMEMultipart('mixed')
    msg['Subject'] = email.header.Header('\ud55c\uae00 report for the month', 'utf-8')
    alternative = MIMEMultipart('alternative')
    alternative.attach(MIMEText('plain text \ud55c\uae00 ' + 'long line ' * 20 + '\nsecond line\n',
                                'plain', qp))
    alternative.attach(MIMEText('<p>\ud55c\uae00</p>', 'html', 'utf-8'))
    msg.attach(alternative)
    attachment = MIMEApplication(bytes(range(256)) * 20, Name='data.bin')
    attachment['Content-ID'] = '<data@py.example>'
    msg.attach(attachment)
    (d / 'py.eml').write_bytes(msg.as_bytes(policy=email.policy.compat32.clone(linesep='\r\n')))
    write_leaves(email.message_from_bytes((d / 'py.eml').read_bytes(), policy=email.policy.compat32),
                 d / 'py')


if __name__ == '__main__':
    {'codecs': codecs, 'words': words, 'message': message}[sys.argv[1]](pathlib.Path(sys.argv[2]))
