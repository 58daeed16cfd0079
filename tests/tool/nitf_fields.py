"""A second reader of header fields, written from the format's layout alone, for comparison with the tool's listing.

Segments(data).found holds what a file of version 02.10 has to show: one entry for each header, with its fields as the
dictionaries that `tavinitf headers --json` prints. Only files that open are read right.
"""
import re

DELIMITER = b"\x0a\x6e\x1d\x97"
NINES = {"FL": 12, "LISH": 6, "LI": 10, "LSSH": 4, "LTSH": 4, "LDSH": 4, "LD": 9, "NROWS": 8, "NCOLS": 8, "NBPR": 4,
         "NBPC": 4, "NPPBH": 4, "NPPBV": 4}
SINGLE_NUMBERS = ("IMDATOFF", "BMRLNTH", "TMRLNTH", "TPXCDLNTH")
TABLES = {"BMRnBNDm": 4, "TMRnBNDm": 4, "FBKGC": 1, "LUTD": 1, "TPXCD": 1}
SECURITY = (("CLSY", 2), ("CODE", 11), ("CTLH", 2), ("REL", 20), ("DCTP", 2), ("DCDT", 8), ("DCXM", 4), ("DG", 1),
            ("DGDT", 8), ("CLTX", 43), ("CATP", 1), ("CAUT", 40), ("CRSN", 1), ("SRDT", 8), ("CTLN", 15))
LENGTH_TABLES = (("image", "NUMI", "LISH", 6, "LI", 10), ("graphic", "NUMS", "LSSH", 4, "LS", 6),
                 (None, "NUMX", None, 0, None, 0), ("text", "NUMT", "LTSH", 4, "LT", 5),
                 ("data extension", "NUMDES", "LDSH", 4, "LD", 9), (None, "NUMRES", "LRESH", 4, "LRE", 7))
MASKED = (b"NM", b"M0", b"M1", b"M3", b"M4", b"M5")


class ReplacementEnds(Exception):
    pass


def number(text):
    """Blanks, a sign, digits, up to the first other character; 0 without digits."""
    found = re.match(rb"[ \t\n\v\f\r]*([+-]?[0-9]+)", text)
    return int(found[1]) if found else 0


class Segments:
    def __init__(self, data):
        self.data, self.found, self.replaced = data, [], 0
        header = self.read("file header", 0, 0, self.file_header)
        at = number(header["HL"])
        readers = {"image": self.image, "graphic": self.graphic, "text": self.text,
                   "data extension": self.data_extension}
        for kind, count, subheader, _, contents, _ in LENGTH_TABLES:
            if kind is None:
                continue
            for i in range(number(header[count])):
                self.read(kind, i, at, readers[kind])
                at += number(header[subheader, i]) + number(header[contents, i])

    def read(self, kind, index, at, walk):
        """Walks a header; once more in the replacement data when one of its values is all nines."""
        self.fields, self.values, self.at, self.limit = [], {}, at, None
        self.found.append({"kind": kind, "index": index, "fields": self.fields})
        self.nines = False
        walk()
        if self.nines:
            place = self.data.rindex(DELIMITER)
            size = number(self.data[place - 207 : place - 200])  # where the system looks for it
            start = self.at = place + len(DELIMITER) + self.replaced
            self.limit = start + size - self.replaced
            try:
                walk()
                self.replaced += self.at - start
            except ReplacementEnds:
                pass
        return self.values

    def take(self, name, width, index=None, sub_index=None):
        if self.limit is not None and self.at + width > self.limit:
            raise ReplacementEnds
        raw = self.data[self.at : self.at + width]
        assert len(raw) == width, (name, self.at)
        field = {"name": name}
        if index is not None:
            field["index"] = index
        if sub_index is not None:
            field["sub_index"] = sub_index
        field.update(offset=self.at, length=width)
        if name in SINGLE_NUMBERS:
            field["number"] = int.from_bytes(raw, "big")
        elif name in TABLES:
            entry = TABLES[name]
            field["numbers"] = [int.from_bytes(raw[i : i + entry], "big") for i in range(0, width, entry)]
        else:
            field["text"] = raw.decode("latin-1")
        self.fields.append(field)
        self.at += width
        self.values[name if index is None else (name, index)] = raw
        if raw == b"9" * NINES.get(name, -1):
            self.nines = True
        return raw

    def take_all(self, *fields):
        for name, width in fields:
            self.take(name, width)

    def security(self, prefix):
        self.take_all(*((prefix + name, width) for name, width in SECURITY))

    def extended(self, length_name, overflow_name, block_name, empty_block=True):
        length = number(self.take(length_name, 5))
        if length != 0:
            self.take(overflow_name, 3)
            if length != 3 or empty_block:
                self.take(block_name, length - 3)

    def file_header(self):
        self.take_all(("FHDR", 4), ("FVER", 5), ("CLEVEL", 2), ("STYPE", 4), ("OSTAID", 10), ("FDT", 14),
                      ("FTITLE", 80), ("FSCLAS", 1))
        self.security("FS")
        self.take_all(("FSCOP", 5), ("FSCPYS", 5), ("ENCRYP", 1), ("FBKGC", 3), ("ONAME", 24), ("OPHONE", 18),
                      ("FL", 12), ("HL", 6))
        for _, count, subheader, subheader_width, contents, contents_width in LENGTH_TABLES:
            for i in range(number(self.take(count, 3))):
                self.take(subheader, subheader_width, i)
                self.take(contents, contents_width, i)
        self.extended("UDHDL", "UDHOFL", "UDHD")
        self.extended("XHDL", "XHDLOFL", "XHD")

    def image(self):
        if self.take("IM", 2) != b"IM":
            raise ReplacementEnds  # no copy of an image subheader stands there
        self.take_all(("IID1", 10), ("IDATIM", 14), ("TGTID", 17), ("IID2", 80), ("ISCLAS", 1))
        self.security("IS")
        self.take_all(("ENCRYP", 1), ("ISORCE", 42), ("NROWS", 8), ("NCOLS", 8), ("PVTYPE", 3), ("IREP", 8),
                      ("ICAT", 8), ("ABPP", 2), ("PJUST", 1))
        if self.take("ICORDS", 1) != b" ":
            self.take("IGEOLO", 60)
        for i in range(number(self.take("NICOM", 1))):
            self.take("ICOM", 80, i)
        coding = self.take("IC", 2)
        if coding not in (b"NC", b"NM"):
            self.take("COMRAT", 4)
        bands = number(self.take("NBANDS", 1)) or number(self.take("XBANDS", 5))
        for band in range(bands):
            self.band(band)
        self.take_all(("ISYNC", 1), ("IMODE", 1))
        across, down = number(self.take("NBPR", 4)), number(self.take("NBPC", 4))
        self.take_all(("NPPBH", 4), ("NPPBV", 4), ("NBPP", 2), ("IDLVL", 3), ("IALVL", 3), ("ILOC", 10), ("IMAG", 4))
        self.extended("UDIDL", "UDOFL", "UDID")
        self.extended("IXSHDL", "IXSOFL", "IXSHD", empty_block=False)
        if coding in MASKED:
            self.mask(across * down * bands)

    def band(self, band):
        for name, width in (("IREPBAND", 2), ("ISUBCAT", 6), ("IFC", 1), ("IMFLT", 3)):
            self.take(name, width, band)
        tables = number(self.take("NLUTS", 1, band))
        entries = number(self.take("NELUT", 5, band)) if tables else 0
        if entries:
            for table in range(1 if tables == 1 else 3):
                self.take("LUTD", entries, band, table)

    def mask(self, entries):
        self.take("IMDATOFF", 4)
        blocks, pads, bits = (int.from_bytes(self.take(name, 2), "big") for name in ("BMRLNTH", "TMRLNTH", "TPXCDLNTH"))
        if bits:
            self.take("TPXCD", (bits + 7) // 8)
        if blocks:
            self.take("BMRnBNDm", 4 * entries)
        if pads:
            self.take("TMRnBNDm", 4 * entries)

    def graphic(self):
        self.take_all(("SY", 2), ("SID", 10), ("SNAME", 20), ("SSCLAS", 1))
        self.security("SS")
        self.take_all(("ENCRYP", 1), ("SFMT", 1), ("SSTRUCT", 13), ("SDLVL", 3), ("SALVL", 3), ("SLOC", 10),
                      ("SBND1", 10), ("SCOLOR", 1), ("SBND2", 10), ("SRES2", 2))
        self.extended("SXSHDL", "SXSOFL", "SXSHD")

    def text(self):
        self.take_all(("TE", 2), ("TEXTID", 7), ("TXTALVL", 3), ("TXTDT", 14), ("TXTITL", 80), ("TSCLAS", 1))
        self.security("TS")
        self.take_all(("ENCRYP", 1), ("TXTFMT", 3))
        self.extended("TXSHDL", "TXSOFL", "TXSHD")

    def data_extension(self):
        self.take("DE", 2)
        identifier = self.take("DESID", 25)
        self.take_all(("DESVER", 2), ("DESCLAS", 1))
        self.security("DES")
        if not identifier.startswith(b"TRE_OVERFLOW\0"):  # as documented: all kinds but this spelling have these two
            self.take_all(("DESOFLW", 6), ("DESITEM", 3))
        length = number(self.take("DESSHL", 4))
        if length:
            self.take("DESSHF", length)


def tagged_records(segment):
    """The records in the extended data of a header, as `tavinitf info --json` prints them."""
    records = []
    for field in segment["fields"]:
        if field["name"] not in ("UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "TXSHD"):
            continue
        block, at = field["text"], 0
        while at < len(block):
            digits = re.match(r"\s*([0-9]*)", block[at + 6 : at + 11])[1]
            length = int(digits or 0)
            records.append({"tag": block[at : at + 6], "block": field["name"], "offset": field["offset"] + at,
                            "length": length, "overruns": at + 11 + length > len(block)})
            at += 11 + length
    return records
