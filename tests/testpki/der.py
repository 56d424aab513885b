"""Just enough DER to write the toolkit's test fixtures."""


def tlv(tag, body):
    n = len(body)
    if n < 0x80:
        length = bytes([n])
    else:
        raw = n.to_bytes((n.bit_length() + 7) // 8, "big")
        length = bytes([0x80 | len(raw)]) + raw
    return bytes([tag]) + length + body


def seq(*items):
    return tlv(0x30, b"".join(items))


def set_of(*items):
    return tlv(0x31, b"".join(sorted(items)))


def integer(value):
    raw = value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True)
    return tlv(0x02, raw)


def octets(data):
    return tlv(0x04, data)


def bits(data):
    return tlv(0x03, b"\x00" + data)


def null():
    return b"\x05\x00"


def boolean(value):
    return tlv(0x01, b"\xff" if value else b"\x00")


def oid(dotted):
    parts = [int(p) for p in dotted.split(".")]
    body = bytearray([40 * parts[0] + parts[1]])
    for part in parts[2:]:
        chunk = [part & 0x7F]
        part >>= 7
        while part:
            chunk.append(0x80 | (part & 0x7F))
            part >>= 7
        body += bytes(reversed(chunk))
    return tlv(0x06, bytes(body))


def context(number, body, constructed=True):
    return tlv((0xA0 if constructed else 0x80) | number, body)


def children(data):
    """The encodings of the elements inside one constructed TLV."""
    body, _ = _body(data, 0)
    items, pos = [], 0
    while pos < len(body):
        _, end = _body(body, pos)
        items.append(body[pos:end])
        pos = end
    return items


def _body(data, pos):
    first = data[pos + 1]
    if first < 0x80:
        start, n = pos + 2, first
    else:
        count = first & 0x7F
        start, n = pos + 2 + count, int.from_bytes(data[pos + 2:pos + 2 + count], "big")
    return data[start:start + n], start + n


def value(data):
    """The content octets of one TLV."""
    return _body(data, 0)[0]
