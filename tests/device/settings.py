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

    @property
    def is_flash(self):
        """Whether the file system is on simulated flash, which has no cache and takes no disk requests."""
        return self.file_system == "ubifs"


SETTINGS = (
    Setting("as opened", "", LAST_ROW),
    Setting("synchronous=EXTRA", "PRAGMA synchronous = EXTRA", NOTHING),
    Setting("journal_mode=TRUNCATE", "PRAGMA journal_mode = TRUNCATE", NOTHING),
    Setting("journal_mode=WAL", "PRAGMA journal_mode = WAL", NOTHING),
    Setting("as opened, dirsync", "", NOTHING, options="rw,dirsync"),
    Setting("synchronous=OFF", "PRAGMA synchronous = OFF", ANYTHING),
    Setting("as opened, f2fs", "", LAST_ROW, "f2fs"),
    Setting("EXTRA, f2fs", "PRAGMA synchronous = EXTRA", NOTHING, "f2fs"),
    Setting("WAL, f2fs", "PRAGMA journal_mode = WAL", NOTHING, "f2fs"),
    Setting("as opened, UBIFS", "", LAST_ROW, "ubifs"),
    Setting("EXTRA, UBIFS", "PRAGMA synchronous = EXTRA", NOTHING, "ubifs"),
    Setting("WAL, UBIFS", "PRAGMA journal_mode = WAL", NOTHING, "ubifs"),
)
