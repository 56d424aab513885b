"""Reading the shared test vector files: "name = value" records, blank-line separated."""
from pathlib import Path


def records(path):
    result = []
    for block in Path(path).read_text().split("\n\n"):
        fields = dict(line.split(" = ", 1) for line in block.splitlines()
                      if " = " in line and not line.startswith("#"))
        if fields:
            result.append(fields)
    return result


def kcdsa_domain(path):
    """p, q, g, x, y of the first KCDSA record with 2048-bit domain parameters."""
    for fields in records(path):
        if "k_derived" in fields:
            return {name: int(fields[name], 16) for name in ("p", "q", "g", "x", "y")}
    raise SystemExit("no KCDSA record with domain parameters in " + str(path))
