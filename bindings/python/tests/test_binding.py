"""The cases every binding shares (bindings/cases.tsv, whose head tells how they read), and what is
Python's own: copies across ctypes freed, handles on many threads and handles left to the collector."""
import ctypes
import enum
import os
import pathlib
import re
from concurrent.futures import ThreadPoolExecutor

import pytest

import vqxml

DATA = pathlib.Path(os.environ.get("VQXML_TEST_DATA", pathlib.Path(__file__).parents[3] / "tests" / "data"))
TABLE = pathlib.Path(os.environ.get("VQXML_BINDING_CASES", pathlib.Path(__file__).parents[2] / "cases.tsv"))
REFUSALS = {"arg": ValueError, "closed": ValueError}  # a NUL in a text; a closed handle
CASES = {} if TABLE.exists() else {f"test input missing: {TABLE}": None}
for f in (line.split("\t") for line in (TABLE.read_text("utf-8").splitlines() if TABLE.exists() else [])):
    if f[0] == "case":
        CASES[f[1]] = [f]
    elif f[0] and not f[0].startswith("#"):
        CASES[next(reversed(CASES))].append(f)


def arg(a, values):
    if a == "null":
        return None
    if a.startswith("@"):
        if a[1:] in values:
            return values[a[1:]]
        path = DATA / a[1:]
        return path.read_bytes() if path.exists() else pytest.fail(f"test input missing: {path}")
    if re.fullmatch(r"[A-Z]\w*\.[A-Z][A-Z0-9_]*", a):
        holder, name = a.split(".")
        owner = getattr(vqxml, holder)  # module-level here, the other bindings' class constants
        return getattr(owner, name) if hasattr(owner, name) else getattr(vqxml, name)
    a = a.replace("\\r", "\r").replace("\\n", "\n").replace("\\0", "\0")
    return a[2:].encode() if a.startswith("b:") else a


def norm(value):
    """Any result or expectation as the bytes it stands for, one character each."""
    if value is None or isinstance(value, bool):
        return str(value).lower()
    value = value.name if isinstance(value, enum.Enum) else " ".join(value) if isinstance(value, list) else value
    return (value.encode() if isinstance(value, str) else value).decode("latin-1")


def refused_as(e, status, text=""):
    """Whether e is the binding's own refusal named, or the library's status with its text."""
    if status in REFUSALS:
        return isinstance(e, REFUSALS[status])
    wanted = int(status) if status.isdigit() else getattr(vqxml.VqxmlError, status)
    return (isinstance(e, vqxml.VqxmlError) and e.status == wanted and text in e.text
            and (" > " in e.text or wanted in (10103, 10104)))


def step(f, values):
    at = next((i for i, x in enumerate(f) if x in ("=>", "==", "~~", "!~", "!!")), len(f))
    args, check, expected = [arg(a, values) for a in f[2:at]], f[at] if at < len(f) else None, f[at + 1:]
    try:
        if f[0] == "-":  # replace or concat, on the bytes
            p = [norm(a) for a in args]
            assert f[1] == "concat" or p[1] in p[0], f
            result = ("".join(p) if f[1] == "concat" else p[0].replace(p[1], p[2])).encode("latin-1")
        else:
            result = getattr(values[f[0]], f[1])(*args)
    except (vqxml.VqxmlError, ValueError) as e:
        if check != "!!":
            raise
        assert refused_as(e, *expected), (f, e)
        return
    assert check != "!!", f"{f}: succeeded"
    if check == "=>":
        values[expected[0]] = result
    elif check:
        actual, wanted = norm(result), norm(arg(expected[0], values))
        assert {"==": actual == wanted, "~~": wanted in actual, "!~": wanted not in actual}[check], (f, actual)


@pytest.mark.parametrize("case", list(CASES))
def test_shared_case(case):
    if CASES.get(case) is None:
        pytest.fail(f"no case {case}")
    values = {name: getattr(vqxml, cls)() for name, cls in (h.split("=") for h in CASES[case][0][2:])}
    handles = list(values.values())
    try:
        for f in CASES[case][1:]:
            step(f, values)
    finally:
        for handle in handles:
            handle.close()


def malloc_bytes():
    libc = ctypes.CDLL("libc.so.6")
    libc.mallinfo2.restype = type("MallInfo2", (ctypes.Structure,), {"_fields_": [(f"f{i}", ctypes.c_size_t)
                                                                                   for i in range(10)]})
    info = libc.mallinfo2()
    return info.f7 + info.f4  # uordblks, hblkhd


def test_rounds_across_the_boundary_leave_nothing_behind():
    """Handles are finished and results copied, not kept: over rounds of the signature and
    encryption cases, malloc does not grow in every stretch of 50 rounds, as a handle or result
    left behind each round would make it."""
    marks = []
    with vqxml.Handle():  # kept open, so that the engines stay up
        for round_ in range(301):
            if round_ % 50 == 0 and round_ >= 100:
                marks.append(malloc_bytes())
            test_shared_case("tax_invoice")
            test_shared_case("encrypted_for_one_recipient")
    least = min(b - a for a, b in zip(marks, marks[1:]))
    assert least < 64 << 10, f"malloc grew by at least {least} bytes in every 50 rounds"


def test_cases_on_many_threads_and_handles_left_to_the_collector():
    with ThreadPoolExecutor(8) as pool:
        list(pool.map(test_shared_case, ["tax_invoice"] * 200))
    with vqxml.Handle():  # kept open, so that the engines stay up
        for _ in range(5000):
            test_shared_case("fresh_handles")
            assert vqxml.Certificates().version().startswith("V")
