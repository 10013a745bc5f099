"""The settings under which the device writes, and what a power cut may cost in each."""

import dataclasses

NOTHING = "nothing"
LAST_ROW = "the last row"
ANYTHING = "anything"


@dataclasses.dataclass(frozen=True)
class Setting:
    name: str
    pragmas: str
    may_lose: str  # unless it is NOTHING, the cuts must show this loss
    file_system: str = "ext4"
    options: str = "rw"
    tears: bool = False  # whether every cut is inside a call and tears the last block

    @property
    def is_flash(self):
        """Whether the file system is on simulated flash, which has no cache and takes no disk requests."""
        return self.file_system == "ubifs"


SETTINGS = (
    Setting("ext4, default settings", "", LAST_ROW),
    Setting("ext4, synchronous=EXTRA", "PRAGMA synchronous = EXTRA", NOTHING),
    Setting("ext4, journal_mode=TRUNCATE", "PRAGMA journal_mode = TRUNCATE", NOTHING),
    Setting("ext4, journal_mode=WAL", "PRAGMA journal_mode = WAL", NOTHING),
    Setting("ext4, dirsync", "", NOTHING, options="rw,dirsync"),
    Setting("ext4, synchronous=OFF", "PRAGMA synchronous = OFF", ANYTHING),
    Setting("f2fs, default settings", "", LAST_ROW, "f2fs"),
    Setting("f2fs, synchronous=EXTRA", "PRAGMA synchronous = EXTRA", NOTHING, "f2fs"),
    Setting("f2fs, journal_mode=WAL", "PRAGMA journal_mode = WAL", NOTHING, "f2fs"),
    # The last block that f2fs writes is often a node block, and f2fs uses a node block if the end of the
    # block is new.
    Setting("f2fs, journal_mode=WAL, torn block", "PRAGMA journal_mode = WAL", ANYTHING, "f2fs", tears=True),
    Setting("UBIFS, default settings", "", LAST_ROW, "ubifs"),
    Setting("UBIFS, synchronous=EXTRA", "PRAGMA synchronous = EXTRA", NOTHING, "ubifs"),
    Setting("UBIFS, journal_mode=WAL", "PRAGMA journal_mode = WAL", NOTHING, "ubifs"),
)
