"""A disk with a volatile cache, served to the emulated machine over NBD."""

import os
import socket
import struct
import threading

READ, WRITE, DISCONNECT, FLUSH = 0, 1, 2, 3
OPTION_EXPORT_NAME, OPTION_ABORT, OPTION_INFO, OPTION_GO = 1, 2, 6, 7
# The disk does not offer trim, zeroing or forced unit access, so every write passes through the cache.
HAS_FLAGS_AND_FLUSH = 1 | 4


class Disk(threading.Thread):
    """Keeps unflushed writes separate from the image. Call `cut` to stop the disk, then `lose` to lose some of them.

    `lose` keeps or loses each sector completely, but it can tear a write of several sectors. `tear` tears a sector.

    `log` holds every write, as (offset, data), and None for every flush, in the order in which they were answered; the
    owner may append marks to it.
    """

    def __init__(self, path, image, sector):
        super().__init__(daemon=True)
        self._sector = sector  # bytes
        self.image = image  # a bytearray: what has been flushed
        self.unflushed = {}  # sector -> contents, oldest first
        self.log = []
        self.requests_left = None  # writes and flushes until the power is cut
        self.is_off = threading.Event()
        self._lock = threading.Lock()
        if os.path.exists(path):
            os.unlink(path)
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(path)
        self._listener.listen(1)

    def cut(self):
        """Stops answering. Requests that are in progress have no effect afterwards."""
        with self._lock:
            self.is_off.set()

    def cut_after(self, requests):
        with self._lock:
            self.requests_left = requests

    def close(self):
        self.cut()
        self._listener.close()

    def tear(self):
        """Loses all unflushed writes except the last 512 bytes of the last sector. Returns the same as `lose`."""
        unflushed = len(self.unflushed)
        if unflushed:
            sector, contents = self.unflushed.popitem()
            begin = sector * self._sector
            self._store(sector, self.image[begin : begin + self._sector - 512] + contents[-1][-512:])
        self.unflushed.clear()
        return unflushed, unflushed

    def lose(self, rng):
        """Gives each unflushed sector its old content or any content that was written to it. Returns the number of
        unflushed sectors, and how many of them lost their last content."""
        unflushed, lost = len(self.unflushed), 0
        share = rng.choice((0.0, 0.1, 0.5, 0.9, 1.0))  # how much reached the disk without a flush
        for sector, contents in self.unflushed.items():
            kept = rng.choice(contents) if rng.random() < share else None
            if kept is not None:
                self._store(sector, kept)
            lost += kept is not contents[-1]
        self.unflushed.clear()
        return unflushed, lost

    def run(self):
        try:
            connection, _ = self._listener.accept()
            with connection:
                if self._negotiate(connection):
                    while self._serve(connection):
                        pass
        except OSError:
            pass  # the machine was killed

    @staticmethod
    def _receive(connection, size):
        data = connection.recv(size, socket.MSG_WAITALL) if size else b""
        if len(data) < size:
            raise ConnectionError
        return data

    def _negotiate(self, connection):
        connection.sendall(b"NBDMAGIC" + b"IHAVEOPT" + struct.pack(">H", 3))
        self._receive(connection, 4)
        while True:
            _, option, length = struct.unpack(">8sII", self._receive(connection, 16))
            self._receive(connection, length)

            def reply(kind, data=b"", option=option):
                connection.sendall(struct.pack(">QIII", 0x3E889045565A9, option, kind, len(data)) + data)

            if option in (OPTION_INFO, OPTION_GO):
                reply(3, struct.pack(">HQH", 0, len(self.image), HAS_FLAGS_AND_FLUSH))
                reply(3, struct.pack(">HIII", 3, self._sector, 4096, 1 << 25))  # block sizes
                reply(1)
                if option == OPTION_GO:
                    return True
            elif option == OPTION_EXPORT_NAME:
                connection.sendall(struct.pack(">QH", len(self.image), HAS_FLAGS_AND_FLUSH))
                return True
            elif option == OPTION_ABORT:
                reply(1)
                return False
            else:
                reply(0x80000001)  # not supported

    def _serve(self, connection):
        _, _, kind, handle, offset, length = struct.unpack(">IHHQQI", self._receive(connection, 28))
        data = self._receive(connection, length) if kind == WRITE else b""
        answer = b""
        with self._lock:
            if self.is_off.is_set() or kind == DISCONNECT:
                return False
            if self._is_last(kind):
                if kind == WRITE:
                    self._write(offset, data)  # any part of this write may have reached the disk
                self.is_off.set()
                return False
            if kind == READ:
                answer = self._read(offset, length)
            elif kind == WRITE:
                self._write(offset, data)
                self.log.append((offset, data))
            elif kind == FLUSH:
                self._flush()
                self.log.append(None)
        connection.sendall(struct.pack(">IIQ", 0x67446698, 0, handle) + answer)
        return True

    def _is_last(self, kind):
        if self.requests_left is None or kind not in (WRITE, FLUSH):
            return False
        self.requests_left -= 1
        return self.requests_left <= 0

    def _store(self, sector, content):
        self.image[sector * self._sector : (sector + 1) * self._sector] = content

    def _read(self, offset, length):
        data = bytearray(self.image[offset : offset + length])
        for sector in range(offset // self._sector, (offset + length) // self._sector):
            if sector in self.unflushed:
                begin = sector * self._sector - offset
                data[begin : begin + self._sector] = self.unflushed[sector][-1]
        return bytes(data)

    def _write(self, offset, data):
        for begin in range(0, len(data), self._sector):
            contents = self.unflushed.setdefault((offset + begin) // self._sector, [])
            contents.append(data[begin : begin + self._sector])

    def _flush(self):
        for sector, contents in self.unflushed.items():
            self._store(sector, contents[-1])
        self.unflushed.clear()
