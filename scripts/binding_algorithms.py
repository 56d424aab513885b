#!/usr/bin/env python3
"""Writes the selector enums of the Java, C# and Python bindings from the one
algorithm table, engine/Algorithms.def, between their "algorithms: begin" and
"algorithms: end" lines. Member names come from the tool's names ("rsa-sha256"
is RSA_SHA256 in Java and Python, RsaSha256 in C#).

  scripts/binding_algorithms.py          rewrite the three files
  scripts/binding_algorithms.py --check  exit 1 if one of them is not current
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROW = re.compile(r'^VQXML_ALGORITHM\((\w+),\s*(-?\d+),\s*"([^"]*)",.*"([^"]*)"\)\s*$')

# The enums and the table kinds they list, in the bindings' own names.
ENUMS = [
    ("Signature", "SIGNATURE", "Signature algorithms (SignatureMethod)."),
    ("Canonicalization", "C14N", "For SignedInfo of XML Signature and ebXML (NONE means C14N there) and for references."),
    ("SoapCanonicalization", "SOAP_C14N", "SignedInfo of a WS-Security signature, whose selectors differ from the others."),
    ("Digest", "DIGEST", "Reference digests (DigestMethod)."),
    ("Cipher", "CIPHER", "Data encryption (EncryptionMethod of EncryptedData)."),
    ("KeyTransport", "KEY_TRANSPORT", "Key transport and wrap: a key-encryption key for the key wraps, else the recipient's certificate."),
]

# Tool names that do not start as an identifier may.
SPELLED = {"3des": "triple-des", "kw-3des": "kw-triple-des"}


def rows():
    table = {}
    for line in (ROOT / "engine/Algorithms.def").read_text().splitlines():
        m = ROW.match(line)
        if m and int(m.group(2)) >= 0:
            kind, selector, tool, description = m.group(1), int(m.group(2)), m.group(3), m.group(4)
            description = re.sub(r" \(with [^)]*\)$", "", description)  # the tool's option
            table.setdefault(kind, []).append((selector, SPELLED.get(tool, tool), description))
    return table


def words(tool):
    return [w for w in re.split(r"[^A-Za-z0-9]+", tool) if w]


def upper(tool):
    return "_".join(w.upper() for w in words(tool))


def pascal(tool):
    return "".join(w[:1].upper() + w[1:] for w in words(tool))


def python(table):
    out = []
    for name, kind, doc in ENUMS:
        out += ["", "", "class %s(IntEnum):" % name, '    """%s"""' % doc]
        out += ["    %s = %d  # %s" % (upper(t), s, d) for s, t, d in table[kind]]
    return out[2:]


def java(table):
    out = []
    for name, kind, doc in ENUMS:
        members = ",\n".join("        /** %s */ %s(%d)" % (d, upper(t), s) for s, t, d in table[kind])
        out += ["", "    /** %s */" % doc, "    public enum %s {" % name, members + ";",
                "        final int selector;", "        %s(int selector) { this.selector = selector; }" % name, "    }"]
    return out[1:]


def csharp(table):
    out = []
    for name, kind, doc in ENUMS:
        csname = "SignatureAlgorithm" if name == "Signature" else name
        out += ["", "    /// <summary>%s</summary>" % doc, "    public enum %s" % csname, "    {"]
        out += ["        /// <summary>%s</summary>\n        %s = %d," % (d, pascal(t), s) for s, t, d in table[kind]]
        out += ["    }"]
    return out[1:]


FILES = [
    ("bindings/python/src/vqxml/algorithms.py", "# algorithms: ", python),
    ("bindings/java/src/main/java/kr/vqxml/Algorithms.java", "    // algorithms: ", java),
    ("bindings/dotnet/src/Algorithms.cs", "    // algorithms: ", csharp),
]


def main():
    check = sys.argv[1:] == ["--check"]
    table = rows()
    stale = []
    for path, marker, write in FILES:
        file = ROOT / path
        text = file.read_text()
        begin, end = marker + "begin (scripts/binding_algorithms.py)", marker + "end"
        head, rest = text.split(begin + "\n", 1)
        _, tail = rest.split(end + "\n", 1)
        new = head + begin + "\n" + "\n".join(write(table)) + "\n" + end + "\n" + tail
        if new != text:
            stale.append(path)
            if not check:
                file.write_text(new)
    if check and stale:
        print("not current (run scripts/binding_algorithms.py): " + ", ".join(stale))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
