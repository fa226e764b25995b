# SPDX-License-Identifier: MIT
"""What every generator module shares: where root and home are, the seeded random source, the scale,
the apps written so far, and small writers that keep every path below the sample's root."""
import errno
import struct
import sys
import zlib
import os
import pathlib
import plistlib
import random
from dataclasses import dataclass, field


@dataclass
class App:
    name: str            # the name the program should show
    bundle_id: str       # None when the bundle declares none
    path: pathlib.Path   # the .app bundle
    listed: bool = True  # whether discovery should list it


@dataclass
class Context:
    root: pathlib.Path
    seed: int
    scale: str
    rng: random.Random = None
    home: pathlib.Path = None
    apps: list = field(default_factory=list)
    # bundle identifier -> list of absolute paths that the mdfind stand-in answers for it
    spotlight_answers: dict = field(default_factory=dict)

    def __init__(self, root, seed, scale):
        self.root = pathlib.Path(root)
        self.seed = seed
        self.scale = scale
        self.rng = random.Random(seed)
        self.home = self.root / "Users" / "ann"
        self.apps = []
        self.spotlight_answers = {}
        self.home.mkdir(parents=True, exist_ok=True)

    @property
    def large(self):
        return self.scale == "large"

    def system(self, mac_path):
        """ROOT + an absolute Mac path such as "/Library/Caches"."""
        return self.root / mac_path.lstrip("/")

    def user(self, relative):
        """HOME + a path such as "Library/Caches"."""
        return self.home / relative.lstrip("/")

    def _inside(self, path):
        path = pathlib.Path(path)
        resolved = pathlib.Path(os.path.abspath(path))
        if self.root not in resolved.parents and resolved != self.root:
            raise ValueError(f"{path} is outside the sample Mac")
        return path

    @staticmethod
    def _refused(path, error):
        """True (after saying so) when the file system refuses the name itself, as APFS does with
        names that are not UTF-8; the sample then goes without that entry."""
        if error.errno not in (errno.EILSEQ, errno.EINVAL):
            return False
        print(f"make_sample_mac: skipped {os.fsencode(path)!r}: {error.strerror}", file=sys.stderr)
        return True

    def write(self, path, data=b""):
        path = self._inside(path)
        if isinstance(data, str):
            data = data.encode()
        try:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)
        except OSError as error:
            if not self._refused(path, error):
                raise
        return path

    def noise(self, size):
        """size bytes of deterministic filler."""
        return self.rng.randbytes(size)

    def icns(self, path, colour, size=128):
        """An .icns holding one PNG: a rounded tile in colour, lighter at the top, with a white dot."""
        rows = []
        radius = size * 0.22
        for y in range(size):
            row = bytearray([0])
            for x in range(size):
                cx = min(max(x, radius), size - 1 - radius)
                cy = min(max(y, radius), size - 1 - radius)
                inside = (x - cx) ** 2 + (y - cy) ** 2 <= radius ** 2
                dot = (x - size / 2) ** 2 + (y - size / 2) ** 2 <= (size / 5) ** 2
                shade = 1.0 - 0.35 * y / size
                pixel = (255, 255, 255, 255) if dot else tuple(int(c * shade) for c in colour) + (255,)
                row += bytes(pixel if inside else (0, 0, 0, 0))
            rows.append(bytes(row))

        def chunk(kind, data):
            return (struct.pack(">I", len(data)) + kind + data
                    + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))

        png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
               + chunk(b"IDAT", zlib.compress(b"".join(rows), 9)) + chunk(b"IEND", b""))
        entry = b"ic07" + struct.pack(">I", 8 + len(png)) + png
        return self.write(path, b"icns" + struct.pack(">I", 8 + len(entry)) + entry)

    def folder(self, path):
        path = self._inside(path)
        try:
            path.mkdir(parents=True, exist_ok=True)
        except OSError as error:
            if not self._refused(path, error):
                raise
        return path

    def symlink(self, target, link):
        link = self._inside(link)
        link.parent.mkdir(parents=True, exist_ok=True)
        if link.is_symlink() or link.exists():
            link.unlink()
        os.symlink(target, link)
        return link

    def plist(self, path, value, binary=False):
        fmt = plistlib.FMT_BINARY if binary else plistlib.FMT_XML
        return self.write(path, plistlib.dumps(value, fmt=fmt))
