#!/usr/bin/env python3
"""Writes engine/korean/DesSboxCircuits.inc: the eight DES S-boxes as networks of
AND, OR, XOR, AND-NOT and NOT gates, for the bitsliced Triple DES
(TripleDesBitsliced.hpp), where each gate works on one bit of many blocks at once.

Each S-box maps six input bits to four output bits. Its four output functions
are built together as a multiplexer network: a function is split on one input
(f = f0 ^ (x & (f0 ^ f1)), or a single gate when a cofactor is constant or the
complement of the other) and every sub-function is computed once, found again
by its truth table whoever needs it. The order in which the inputs are split
changes the size a lot, so all 720 orders are tried, and for each of them the
four outputs in every order; the smallest network, without the gates no output
needs, is written.

  scripts/des_sbox_circuits.py          rewrite the .inc file
  scripts/des_sbox_circuits.py --check  exit 1 if it is not current
  scripts/des_sbox_circuits.py --stats  print the gate counts
"""
import itertools
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
OUT = ROOT / "engine" / "korean" / "DesSboxCircuits.inc"

# FIPS 46-3, the selection functions S1 to S8: row (first and last input bit),
# then column (the middle four bits).
SBOXES = [
    [[14, 4, 13, 1, 2, 15, 11, 8, 3, 10, 6, 12, 5, 9, 0, 7],
     [0, 15, 7, 4, 14, 2, 13, 1, 10, 6, 12, 11, 9, 5, 3, 8],
     [4, 1, 14, 8, 13, 6, 2, 11, 15, 12, 9, 7, 3, 10, 5, 0],
     [15, 12, 8, 2, 4, 9, 1, 7, 5, 11, 3, 14, 10, 0, 6, 13]],
    [[15, 1, 8, 14, 6, 11, 3, 4, 9, 7, 2, 13, 12, 0, 5, 10],
     [3, 13, 4, 7, 15, 2, 8, 14, 12, 0, 1, 10, 6, 9, 11, 5],
     [0, 14, 7, 11, 10, 4, 13, 1, 5, 8, 12, 6, 9, 3, 2, 15],
     [13, 8, 10, 1, 3, 15, 4, 2, 11, 6, 7, 12, 0, 5, 14, 9]],
    [[10, 0, 9, 14, 6, 3, 15, 5, 1, 13, 12, 7, 11, 4, 2, 8],
     [13, 7, 0, 9, 3, 4, 6, 10, 2, 8, 5, 14, 12, 11, 15, 1],
     [13, 6, 4, 9, 8, 15, 3, 0, 11, 1, 2, 12, 5, 10, 14, 7],
     [1, 10, 13, 0, 6, 9, 8, 7, 4, 15, 14, 3, 11, 5, 2, 12]],
    [[7, 13, 14, 3, 0, 6, 9, 10, 1, 2, 8, 5, 11, 12, 4, 15],
     [13, 8, 11, 5, 6, 15, 0, 3, 4, 7, 2, 12, 1, 10, 14, 9],
     [10, 6, 9, 0, 12, 11, 7, 13, 15, 1, 3, 14, 5, 2, 8, 4],
     [3, 15, 0, 6, 10, 1, 13, 8, 9, 4, 5, 11, 12, 7, 2, 14]],
    [[2, 12, 4, 1, 7, 10, 11, 6, 8, 5, 3, 15, 13, 0, 14, 9],
     [14, 11, 2, 12, 4, 7, 13, 1, 5, 0, 15, 10, 3, 9, 8, 6],
     [4, 2, 1, 11, 10, 13, 7, 8, 15, 9, 12, 5, 6, 3, 0, 14],
     [11, 8, 12, 7, 1, 14, 2, 13, 6, 15, 0, 9, 10, 4, 5, 3]],
    [[12, 1, 10, 15, 9, 2, 6, 8, 0, 13, 3, 4, 14, 7, 5, 11],
     [10, 15, 4, 2, 7, 12, 9, 5, 6, 1, 13, 14, 0, 11, 3, 8],
     [9, 14, 15, 5, 2, 8, 12, 3, 7, 0, 4, 10, 1, 13, 11, 6],
     [4, 3, 2, 12, 9, 5, 15, 10, 11, 14, 1, 7, 6, 0, 8, 13]],
    [[4, 11, 2, 14, 15, 0, 8, 13, 3, 12, 9, 7, 5, 10, 6, 1],
     [13, 0, 11, 7, 4, 9, 1, 10, 14, 3, 5, 12, 2, 15, 8, 6],
     [1, 4, 11, 13, 12, 3, 7, 14, 10, 15, 6, 8, 0, 5, 9, 2],
     [6, 11, 13, 8, 1, 4, 10, 7, 9, 5, 0, 15, 14, 2, 3, 12]],
    [[13, 2, 8, 4, 6, 15, 11, 1, 10, 9, 3, 14, 5, 0, 12, 7],
     [1, 15, 13, 8, 10, 3, 7, 4, 12, 5, 6, 11, 0, 14, 9, 2],
     [7, 11, 4, 1, 9, 12, 14, 2, 0, 6, 10, 13, 15, 3, 5, 8],
     [2, 1, 14, 7, 4, 10, 8, 13, 15, 12, 9, 0, 3, 5, 6, 11]],
]

ALL = (1 << 64) - 1  # truth tables: bit v is the function at input value v


def var_table(i):
    """Input i (0 = the S-box's first, most significant input bit)."""
    return sum(1 << v for v in range(64) if (v >> (5 - i)) & 1)


VARS = [var_table(i) for i in range(6)]


def output_tables(box):
    tables = [0, 0, 0, 0]
    for v in range(64):
        row = ((v >> 4) & 2) | (v & 1)
        col = (v >> 1) & 15
        out = box[row][col]
        for o in range(4):
            if (out >> (3 - o)) & 1:
                tables[o] |= 1 << v
    return tables


def cofactors(f, i):
    """f with input i fixed to 0 and to 1, both as functions that ignore input i."""
    shift = 1 << (5 - i)
    lo = f & ~VARS[i] & ALL
    hi = f & VARS[i]
    return lo | (lo << shift), hi | (hi >> shift)


class Network:
    def __init__(self):
        self.known = {VARS[i]: ("x", i) for i in range(6)}  # table -> its node
        self.gates = []  # (table, op, a, b) in evaluation order

    def gate(self, table, op, a, b=None):
        if table not in self.known:
            self.gates.append((table, op, a, b))
            self.known[table] = ("t", len(self.gates) - 1)
        return table

    def build(self, f, order):
        if f in self.known:
            return f
        if (~f & ALL) in self.known:
            return self.gate(f, "not", ~f & ALL)
        for i in order:
            f0, f1 = cofactors(f, i)
            if f0 != f1:
                break
        x, rest = VARS[i], [j for j in order if j != i]
        if f0 == 0:
            return self.gate(f, "and", x, self.build(f1, rest))
        if f1 == 0:
            return self.gate(f, "andnot", self.build(f0, rest), x)
        if f1 == ~f0 & ALL:
            return self.gate(f, "xor", x, self.build(f0, rest))
        if f0 == ALL:
            return self.gate(f, "or", self.build(~x & ALL, rest), self.build(f1, rest))
        if f1 == ALL:
            return self.gate(f, "or", x, self.build(f0, rest))
        a = self.build(f0, rest)
        b = self.build(f1, rest)
        d = self.gate(a ^ b, "xor", a, b)
        return self.gate(f, "xor", a, self.gate(d & x, "and", d, x))

    def prune(self, outputs):
        """Drops the gates no output needs (a difference built for a product that
        was known already) and numbers the rest again."""
        live = set(outputs)
        for table, op, a, b in reversed(self.gates):
            if table in live:
                live.update(t for t in (a, b) if t is not None)
        self.gates = [g for g in self.gates if g[0] in live]
        self.known = {t: n for t, n in self.known.items() if n[0] == "x"}
        self.known.update((g[0], ("t", n)) for n, g in enumerate(self.gates))


def best_network(box):
    outputs = output_tables(box)
    best = None
    for order in itertools.permutations(range(6)):
        for outs in itertools.permutations(range(4)):
            net = Network()
            for o in outs:
                net.build(outputs[o], list(order))
            net.prune(outputs)
            if best is None or len(net.gates) < len(best[0].gates):
                best = (net, outputs)
    return best


def check(net, outputs):
    """Evaluates the network on all 64 inputs, as the C++ code will."""
    value = {VARS[i]: VARS[i] for i in range(6)}
    ops = {"and": lambda a, b: a & b, "or": lambda a, b: a | b, "xor": lambda a, b: a ^ b,
           "andnot": lambda a, b: a & ~b & ALL, "not": lambda a, b: ~a & ALL}
    for table, op, a, b in net.gates:
        value[table] = ops[op](value[a], value.get(b))
    assert all(value[f] == f for f in outputs)


def emit(index, net, outputs):
    def name(table):
        kind, n = net.known[table]
        return f"x{n}" if kind == "x" else f"t{n}"

    spell = {"and": "{a} & {b}", "or": "{a} | {b}", "xor": "{a} ^ {b}", "andnot": "{a} & ~{b}", "not": "~{a}"}
    lines = [f"// S{index + 1}: {len(net.gates)} gates.",
             "template <class W>",
             f"inline __attribute__((always_inline)) void s{index + 1}(W x0, W x1, W x2, W x3, W x4, W x5, W& y0, W& y1, W& y2, W& y3) {{"]
    for n, (table, op, a, b) in enumerate(net.gates):
        expr = spell[op].format(a=name(a), b=name(b) if b is not None else "")
        lines.append(f"    const W t{n} = {expr};")
    for o, f in enumerate(outputs):
        lines.append(f"    y{o} ^= {name(f)};")
    lines.append("}")
    return "\n".join(lines)


def generate():
    parts = ["// Generated by scripts/des_sbox_circuits.py from the S-box tables of FIPS 46-3;",
             "// do not edit. Regenerate with: python3 scripts/des_sbox_circuits.py",
             "// sN(x0..x5, y0..y3): x0 is the S-box's first input bit, y0 its first output bit;",
             "// each output is XORed into y (the left half of the round).", ""]
    counts = []
    for index, box in enumerate(SBOXES):
        assert all(sorted(row) == list(range(16)) for row in box)
        net, outputs = best_network(box)
        check(net, outputs)
        counts.append(len(net.gates))
        parts.append(emit(index, net, outputs))
        parts.append("")
    return "\n".join(parts), counts


def main():
    text, counts = generate()
    if "--stats" in sys.argv:
        print("gates per S-box:", counts, "total", sum(counts))
    elif "--check" in sys.argv:
        sys.exit(0 if OUT.exists() and OUT.read_text() == text else 1)
    else:
        OUT.write_text(text)


if __name__ == "__main__":
    main()
