#!/usr/bin/env python3
"""Writes the status list of include/vqxml/vqxml.h and the tables of
docs/status-codes.md from core/Statuses.def, the one list of the library's
statuses. With --check it only reports whether both are up to date (the
status_table_current test runs it that way)."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
ENTRY = re.compile(r'^VQXML_STATUS\((\w+), (\d+), (\w+), "((?:[^"\\]|\\.)*)", "((?:[^"\\]|\\.)*)"\)$')

SECTIONS = {
    "SHARED": ("Shared by every family", ""),
    "DSIG": ("XML Signature (`VQTK_XMLDSIG_`, and the ebXML fronts over it)", ""),
    "XENC": ("XML Encryption (`VQTK_XMLENC_`)", ""),
    "SOAPSIGN": ("SOAP signing (`VQTK_SOAPSEC_`)", ""),
    "SOAPENC": ("SOAP encryption and processing (`VQTK_SOAPSEC_`)", ""),
    "STEPS": ("Raised by particular steps", ""),
    "CERT": ("Certificate verification (additions: `VQTK_XMLAPI_VerifyCertChain`, `VQTK_XMLDSIG_VerifySignerCert`)",
             "Each names the check that refused. The text is the function's name, `\" > \"`, the check\n"
             "(`path check failed: `, `signature check failed: `, ...), then the reason with the depth on the\n"
             "path (0 = the certificate checked) and that certificate's subject, Korean names in EUC-KR:\n"
             "`verifyCertChain > validity check failed: Certificate refused at depth 0 (CN=KISA RootCA 1,OU=Korea\n"
             "Certification Authority Central,O=KISA,C=KR): expired`. `VQTK_XMLAPI_VerifyCert` keeps 12011 for\n"
             "all of them.\n"),
}


def statuses():
    entries = []
    for line in (ROOT / "core/Statuses.def").read_text(encoding="utf-8").splitlines():
        match = ENTRY.match(line)
        if match:
            name, code, section, text, docs = match.groups()
            entries.append((name, int(code), section, text.replace('\\"', '"'), docs.replace('\\"', '"')))
        elif line.startswith("VQXML_STATUS"):
            sys.exit(f"core/Statuses.def: cannot read: {line}")
    return entries


def exit_code(code):
    """The vqxml tool's exit code for a status (docs/cli.md)."""
    if 0 <= code <= 63:
        return code
    bases = {101: 100, 102: 120, 103: 140, 104: 160, 105: 180}
    if code // 100 in bases:
        return bases[code // 100] + code % 100
    if 11000 <= code < 13000:
        return 200 + code % 100
    return 255


def header_block(entries):
    lines = ["/* Status codes: 0 is success, anything else a failure (docs/status-codes.md).",
             " * Written from core/Statuses.def by scripts/statuses.py. */"]
    width = max(len(f"#define VQXML_{name} {code}") for name, code, *_ in entries)
    for name, code, _, text, _ in entries:
        define = f"#define VQXML_{name} {code}"
        lines.append(f"{define:<{width}} /* {text} */" if code else define)
    return "\n".join(lines)


def docs_block(entries):
    out = []
    for section, (title, intro) in SECTIONS.items():
        rows = [e for e in entries if e[2] == section and e[1] >= 10000]
        if not rows:
            continue
        out.append(f"### {title}\n")
        if intro:
            out.append(intro)
        out.append("| Status | Name | Meaning | Exit |\n|---|---|---|---|")
        for name, code, _, text, docs in rows:
            out.append(f"| {code} | `VQXML_{name}` | {docs or text} | {exit_code(code)} |")
        out.append("")
    return "\n".join(out).rstrip() + "\n"


def replace_between(text, begin, end, body, path):
    try:
        start = text.index(begin) + len(begin)
        stop = text.index(end, start)
    except ValueError:
        sys.exit(f"{path}: markers {begin!r} / {end!r} are missing")
    return text[:start] + "\n" + body + "\n" + text[stop:]


def main():
    check = "--check" in sys.argv[1:]
    entries = statuses()
    targets = [
        (ROOT / "include/vqxml/vqxml.h", "/* statuses: begin */", "/* statuses: end */", header_block(entries)),
        (ROOT / "docs/status-codes.md", "<!-- statuses: begin -->", "<!-- statuses: end -->", docs_block(entries)),
    ]
    stale = []
    for path, begin, end, body in targets:
        old = path.read_text(encoding="utf-8")
        new = replace_between(old, begin, end, body, path)
        if new != old:
            stale.append(path.relative_to(ROOT))
            if not check:
                path.write_text(new, encoding="utf-8")
    if check and stale:
        sys.exit("out of date with core/Statuses.def (run scripts/statuses.py): " + ", ".join(map(str, stale)))


if __name__ == "__main__":
    main()
