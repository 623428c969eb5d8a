#!/usr/bin/env python3
"""Writes access/storage/code_page_tables.inc: what the bytes 80 to FF of each code page mean.

Bytes that a page leaves undefined stay what they are for the reader and come back on writing:
80 to 9F are the control characters of the same number, the others U+F800 and the byte (private use).
"""

import sys

CODECS = {
    437: "cp437", 720: "cp720", 737: "cp737", 775: "cp775", 850: "cp850", 852: "cp852",
    855: "cp855", 857: "cp857", 858: "cp858", 860: "cp860", 861: "cp861", 862: "cp862",
    863: "cp863", 864: "cp864", 865: "cp865", 866: "cp866", 869: "cp869", 874: "cp874",
    1250: "cp1250", 1251: "cp1251", 1252: "cp1252", 1253: "cp1253", 1254: "cp1254",
    1255: "cp1255", 1256: "cp1256", 1257: "cp1257", 1258: "cp1258",
    10000: "mac_roman", 10006: "mac_greek", 10007: "mac_cyrillic", 10029: "mac_latin2",
    20866: "koi8_r", 21866: "koi8_u",
    28591: "iso8859_1", 28592: "iso8859_2", 28595: "iso8859_5", 28597: "iso8859_7",
    28599: "iso8859_9",
}

# Two pages that the West never heard of: 437 with national letters in place of some others.
KAMENICKY = ("ČüéďäĎŤčěĚĹÍľĺÄÁ"
             "ÉžŽôöÓůÚýÖÜŠĽÝŘť"
             "áíóúňŇŮÔšřŕŔ¼§«»")
MAZOVIA = {0x86: "ą", 0x8D: "ć", 0x8F: "Ą", 0x90: "Ę", 0x91: "ę", 0x92: "ł", 0x95: "Ć",
           0x98: "Ś", 0x9C: "Ł", 0x9E: "ś", 0xA0: "Ź", 0xA1: "Ż", 0xA3: "Ó", 0xA4: "ń",
           0xA5: "Ń", 0xA6: "ź", 0xA7: "ż"}


def from_codec(codec):
    table = {}
    for byte in range(0x80, 0x100):
        try:
            table[byte] = ord(bytes([byte]).decode(codec))
        except UnicodeDecodeError:
            table[byte] = byte if byte < 0xA0 else 0xF800 + byte
    return table


def tables():
    pages = {number: from_codec(codec) for number, codec in CODECS.items()}
    pages[895] = dict(pages[437])
    pages[895].update({0x80 + i: ord(letter) for i, letter in enumerate(KAMENICKY)})
    pages[620] = dict(pages[437])
    pages[620].update({byte: ord(letter) for byte, letter in MAZOVIA.items()})
    return dict(sorted(pages.items()))


def main():
    out = ["// Made by tools/make_code_pages.py: the bytes 80 to FF of each page.", ""]
    pages = tables()
    for number, table in pages.items():
        if len(set(table.values())) != 128 or min(table.values()) < 0x80:
            sys.exit(f"page {number}: two bytes for one character")
        out.append(f"constexpr char16_t kPage{number}[128] = {{")
        for row in range(0x80, 0x100, 8):
            codes = ", ".join(f"0x{table[row + i]:04X}" for i in range(8))
            out.append(f"    {codes},  // {row:02X}")
        out += ["};", ""]
    out.append("#define VELNOR_SINGLE_BYTE_PAGES(page) \\")
    numbers = [f"page({number})" for number in pages]
    lines = [" ".join(numbers[i:i + 8]) for i in range(0, len(numbers), 8)]
    out.append(" \\\n".join("    " + line for line in lines))
    with open(sys.argv[1], "w", encoding="ascii", newline="\n") as file:
        file.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
