#!/usr/bin/env python3
"""Regenerates the damaged position-record files of this folder.

    make_corpus.py [path/to/fxgraph]     (default: $FXGRAPH_BIN)

The valid files come from `fxgraph nodeui pack` (records.json, spare.json);
this script only parses them into layer chains, damages the model and writes
the result back, recomputing every size it is not told to falsify. The
expected outcomes live in expected.txt and are checked by hand, not here.
"""
import copy
import os
import struct
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))


def u32(v):
    return struct.pack("<I", v)


class Reader:
    def __init__(self, data, pos=0):
        self.data, self.pos = data, pos

    def take(self, n):
        if self.pos + n > len(self.data):
            raise ValueError("truncated at %d" % self.pos)
        out = self.data[self.pos:self.pos + n]
        self.pos += n
        return out

    def u8(self):
        return self.take(1)[0]

    def u32(self):
        return struct.unpack("<I", self.take(4))[0]

    def string(self):
        return self.take(self.u32())


class Layer:
    """One chunk: name, version and own data. The "N" layer's own data is a
    record count and nested chains; `overrides` falsifies header fields."""

    def __init__(self, name, major, minor, own):
        self.name, self.major, self.minor, self.own = name, major, minor, own
        self.records = None  # for "N": list of chains (or raw bytes)
        self.count = None    # for "N": a count other than len(records)
        self.overrides = {}

    def own_bytes(self, compact):
        if self.records is None:
            return self.own
        count = len(self.records) if self.count is None else self.count
        body = b"".join(r if isinstance(r, bytes) else write_chain(r, compact) for r in self.records)
        return u32(count) + body


def read_chain(r):
    layers, end = [], None
    while end is None or r.pos < end:
        name = r.string()
        major, minor = r.u8(), r.u8()
        own_size, total = r.u32(), r.u32()
        data_at = r.pos
        if end is None:
            end = data_at + total
        layer = Layer(name, major, minor, b"")
        if name == b"N":
            layer.records = [read_chain(r) for _ in range(r.u32())]
            assert r.pos == data_at + own_size
        else:
            layer.own = r.take(own_size)
        layers.append(layer)
    return layers


def compact(value, small_bytes):
    escape = (1 << (8 * small_bytes)) - 1
    fmt = {1: "<B", 2: "<H"}[small_bytes]
    if value < escape:
        return struct.pack(fmt, value)
    return struct.pack(fmt, escape) + struct.pack({1: "<H", 2: "<I"}[small_bytes], value)


def write_chain(chain, compact_form=False):
    rest = b""
    for layer in reversed(chain):
        own = layer.own_bytes(compact_form)
        o = layer.overrides
        own_size = o.get("own", len(own))
        total = o.get("total", len(own) + len(rest))
        name = u32(o.get("name_len", len(layer.name))) + layer.name
        if compact_form:
            major = 1 if layer.name == b"$" else layer.major
            header = name + compact(major, 1) + compact(layer.minor, 1) + compact(own_size, 2) + compact(total, 2)
        else:
            header = name + bytes([layer.major, layer.minor]) + u32(own_size) + u32(total)
        rest = header + own + rest
    return rest


def read_objects(path):
    with open(path, "rb") as f:
        r = Reader(f.read())
    assert r.take(4) == b"FXOB" and r.u32() == 1
    entries = [[r.string(), r.string(), read_chain(r)] for _ in range(r.u32())]
    assert r.pos == len(r.data)
    return entries


def write_objects(entries, compact_form=False):
    out = b"FXOB" + u32(1) + u32(len(entries))
    for name, kind, chain in entries:
        out += u32(len(name)) + name + u32(len(kind)) + kind + write_chain(chain, compact_form)
    return out


def layer(chain, name):
    return next(l for l in chain if l.name == name)


def main():
    fxgraph = sys.argv[1] if len(sys.argv) > 1 else os.environ.get("FXGRAPH_BIN")
    if not fxgraph:
        sys.exit("usage: make_corpus.py path/to/fxgraph")
    with tempfile.TemporaryDirectory() as tmp:
        for stem in ("records", "spare"):
            subprocess.run([fxgraph, "nodeui", "pack", os.path.join(HERE, stem + ".json"),
                            os.path.join(tmp, stem + ".objects")], check=True, stdout=subprocess.DEVNULL)
        main_entry = read_objects(os.path.join(tmp, "records.objects"))[0]
        spare_entry = read_objects(os.path.join(tmp, "spare.objects"))[0]
    spare_entry[0] = b"Spare"
    base = [main_entry, spare_entry]

    def variant(change):
        # change(entries, records of "NodePosManager") damages a copy of base.
        e = copy.deepcopy(base)
        change(e, layer(e[0][2], b"N").records)
        return e

    def set_override(index, name, **values):
        return lambda e, recs: layer(recs[index], name).overrides.update(values)

    def rename(chain_of, name, new):
        def change(e, recs):
            layer(chain_of(e, recs), name).name = new
        return change

    def both(*changes):
        def change(e, recs):
            for c in changes:
                c(e, recs)
        return change

    def newer_k(e, recs):
        k = layer(recs[1], b"K")
        k.minor, k.own = 1, k.own + b"\x00\x01\x02\x03"

    def older_k(e, recs):
        layer(recs[1], b"K").own = layer(recs[1], b"K").own[:25]

    def l_version_1_0(e, recs):
        l = layer(recs[1], b"L")
        l.minor, l.own = 0, l.own[:13]

    def set_count(n):
        return lambda e, recs: setattr(layer(e[0][2], b"N"), "count", n)

    def two_and_a_half(e, recs):
        third = write_chain(recs[2])
        cut = 15 + 15 + 20  # root header, L header, 20 bytes of L's own data
        recs[2] = third[:cut]
        layer(e[0][2], b"N").count = 3
        del e[1]

    def unknown_kind(e, recs):
        e[1][1] = b"$.T.Z"

    files = {
        "base.objects": write_objects(base),
        "l-name-past-chunk.objects": write_objects(variant(set_override(1, b"L", name_len=60))),
        "root-name-past-file.objects": write_objects(variant(set_override(2, b"$", name_len=0x7FFFFFFF))),
        "k-own-exceeds-total.objects": write_objects(variant(set_override(1, b"K", own=200))),
        "root-total-ffffffff.objects": write_objects(
            variant(lambda e, recs: layer(e[0][2], b"$").overrides.update(total=0xFFFFFFFF))),
        "k-wrong-name-total-ffffffff.objects": write_objects(
            variant(both(rename(lambda e, recs: recs[1], b"K", b"P"), set_override(1, b"P", total=0xFFFFFFFF)))),
        "k-total-zero.objects": write_objects(variant(set_override(1, b"K", total=0))),
        "l-wrong-name-total-short.objects": write_objects(
            variant(both(rename(lambda e, recs: recs[1], b"L", b"P"), set_override(1, b"P", total=5)))),
        "n-wrong-name.objects": write_objects(variant(rename(lambda e, recs: e[0][2], b"N", b"X"))),
        "k-wrong-name.objects": write_objects(variant(rename(lambda e, recs: recs[1], b"K", b"P"))),
        "j-wrong-name.objects": write_objects(variant(rename(lambda e, recs: e[0][2], b"J", b"X"))),
        "k-newer-minor.objects": write_objects(variant(newer_k)),
        "k-older-shorter.objects": write_objects(variant(older_k)),
        "l-version-1-0.objects": write_objects(variant(l_version_1_0)),
        "count-ffffffff.objects": write_objects(variant(set_count(0xFFFFFFFF))),
        "count-80000000.objects": write_objects(variant(set_count(0x80000000))),
        "count-3-two-and-a-half.objects": write_objects(variant(two_and_a_half)),
        "garbage-after.objects": write_objects(base) + b"garbage",
        "unknown-kind.objects": write_objects(variant(unknown_kind)),
        "compact-headers.objects": write_objects(base, compact_form=True),
    }
    for name, data in files.items():
        with open(os.path.join(HERE, name), "wb") as f:
            f.write(data)
    print("wrote %d files to %s" % (len(files), HERE))


if __name__ == "__main__":
    main()
