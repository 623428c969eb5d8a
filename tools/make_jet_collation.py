#!/usr/bin/env python3
"""Turns the weight tables of the General sort order into the .inc files that text_collation.cpp includes.

usage: make_jet_collation.py JET4.tsv JET3.tsv FOLDER

JET4.tsv: first, last (code units, hex), class (weight, inline, mark, kana, none), primary bytes (hex), step (1: each
next unit of the run is one higher), secondary bytes or inline code (hex), weights (or small, normal).
JET3.tsv: byte, primary bytes, accent nibbles (hex, empty for none). Lines led by # are remarks.
"""
import sys

CLASSES = {'none': 'None', 'weight': 'Weight', 'inline': 'Inline', 'mark': 'Mark', 'kana': 'Kana'}


def rows(path):
    with open(path, encoding='utf-8') as f:
        for line in f:
            if not line.startswith('#'):
                yield line.rstrip('\n').split('\t')


def braces(values):
    return '{' + ', '.join('0x%02x' % v for v in values) + '}'


def jet4(source, out):
    for first, last, kind, primary, step, secondary, extra, _ in rows(source):
        if first == 'first':
            continue
        weights = int(extra) if kind == 'weight' else 1 if kind == 'kana' else 0
        second = list(bytes.fromhex(secondary))
        if kind in ('weight', 'kana'):
            second = (second or [2] * weights)
            assert len(second) == weights, (first, second)
        first_bytes = bytes.fromhex(primary)
        assert len(first_bytes) <= 4 and len(second) <= 3, first
        out.write('{0x%s, 0x%s, Kind::%s, %s, %d, %d, %s, %s},\n' % (
            first.lower(), last.lower(), CLASSES[kind], step, len(first_bytes), weights, braces(first_bytes),
            braces(second)))


def jet3(source, out):
    for byte, primary, accent, _ in rows(source):
        if byte == 'byte':
            continue
        first = list(bytes.fromhex(primary))
        nibbles = [int(x, 16) for x in accent.split()]
        out.write('{%d, %d, %s, %s},\n' % (len(first), len(nibbles), braces(first), braces(nibbles)))


def main(argv):
    if len(argv) != 4:
        sys.exit(__doc__)
    for make, source, name in ((jet4, argv[1], 'jet4_weights.inc'), (jet3, argv[2], 'jet3_weights.inc')):
        with open(argv[3] + '/' + name, 'w', encoding='ascii', newline='\n') as out:
            out.write('// Made by tools/make_jet_collation.py.\n')
            make(source, out)


main(sys.argv)
