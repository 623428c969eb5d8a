#!/usr/bin/env python3
"""Makes CUSTOMER.DBF, the sample table of the README: invented people, plain dBASE III bytes."""
import datetime, os, struct

FIELDS = [("CUSTNO", "N", 6, 0), ("NAME", "C", 30, 0), ("CITY", "C", 20, 0), ("COUNTRY", "C", 2, 0),
          ("SINCE", "D", 8, 0), ("BALANCE", "N", 12, 2), ("ACTIVE", "L", 1, 0)]
FIRST = "Ada Ben Clara Dan Elif Femi Greta Hugo Ines Jon Kaja Luca Mira Nils Olga".split()
LAST = "Aalto Berg Costa Dubois Eriksen Fischer Greco Haas Ilves Janssen Kowalski Lindqvist".split()
PLACES = [("Bergen", "NO"), ("Porto", "PT"), ("Lyon", "FR"), ("Graz", "AT"), ("Turin", "IT"), ("Tartu", "EE"),
          ("Ghent", "BE"), ("Gdansk", "PL"), ("Malmo", "SE"), ("Aarhus", "DK")]


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    rows = []
    for i in range(120):
        city, country = PLACES[i * 7 % len(PLACES)]
        since = datetime.date(1994, 1, 3) + datetime.timedelta(i * 37 % 3600)
        rows.append(" %6d%-30s%-20s%-2s%s%12.2f%s" % (
            1000 + i, FIRST[i % 15] + " " + LAST[i * 5 % 12], city, country, since.strftime("%Y%m%d"),
            (i * 7919 % 500000) / 100 - 250, "TTTF"[i % 4]))
    head = struct.pack("<B3BIHH16xBBxx", 3, 126, 1, 2, len(rows), 33 + 32 * len(FIELDS),
                       1 + sum(f[2] for f in FIELDS), 0, 0x03)
    with open(os.path.join(here, "CUSTOMER.DBF"), "wb") as f:
        f.write(head)
        for name, kind, width, decimals in FIELDS:
            f.write(name.encode().ljust(11, b"\0") + kind.encode() + bytes(4) + bytes([width, decimals]) + bytes(14))
        f.write(b"\r" + "".join(rows).encode() + b"\x1a")


main()
