# SPDX-License-Identifier: MIT
"""PES packets, reassembled independently of the simulator."""

from transport import payload_of

# Stream ids such as padding, private 2 and ECM: the header of their packets ends after the length.
SHORT_HEADS = (0xBC, 0xBE, 0xBF, 0xF0, 0xF1, 0xF2, 0xF8, 0xFF)


class Pes:
    def __init__(self, pid, last_packet, data):
        self.pid = pid
        self.last_packet = last_packet  # number of the transport packet that completed it
        self.data = bytes(data)

    @property
    def _has_head(self):
        return len(self.data) >= 9 and self.data[3] not in SHORT_HEADS

    @property
    def payload(self):
        return self.data[9 + self.data[8]:] if self._has_head else self.data[6:]

    def _stamp(self, at):
        field = self.data[at:at + 5]
        return ((field[0] >> 1 & 7) << 30) + ((field[1] << 7 | field[2] >> 1) << 15) + (field[3] << 7 | field[4] >> 1)

    @property
    def pts(self):
        return self._stamp(9) if self._has_head and self.data[7] & 0x80 else None

    @property
    def dts(self):
        return self._stamp(14) if self._has_head and self.data[7] & 0xC0 == 0xC0 else self.pts


class Reassembly:
    """The complete PES packets of a PID, which the service must deliver, and the incomplete one at the end.

    Bytes before the first start of a packet are ignored. A packet with a length is complete after this number of bytes.
    It is dropped if the next packet begins or the stream ends before. A packet of open length is complete when the next
    packet begins or the stream ends. A packet is also dropped if it is scrambled or if the continuity counter has a gap.
    """

    def __init__(self, transport, pid):
        self.packets = []
        self.unfinished = b""  # payload of a packet that the end of the stream cuts off
        self._pid = pid
        self._open = None
        self._last = 0
        counter = None
        for number, packet in transport.of(pid):
            follows = counter is None or packet[3] & 0x0F == (counter + 1) % 16
            if not packet[3] & 0x10 or packet[3] & 0x0F == counter:
                continue  # has no payload, or is a repetition
            counter = packet[3] & 0x0F
            if packet[3] & 0xC0:
                self._open = None
                continue
            if packet[1] & 0x40:
                self._close()
                self._open = b""
            elif not follows:
                self._open = None
            self._add(number, payload_of(packet))
        self._close()

    def _add(self, number, payload):
        if self._open is None:
            return
        self._open += payload
        self._last = number
        length = int.from_bytes(self._open[4:6], "big")
        if len(self._open) >= 6 and length and len(self._open) >= 6 + length:
            self.packets.append(Pes(self._pid, number, self._open[:6 + length]))
            self._open = None

    def _close(self):
        self.unfinished = b""
        if self._open and self._open[4:6] == b"\0\0":
            self.packets.append(Pes(self._pid, self._last, self._open))
        elif self._open:
            self.unfinished = Pes(self._pid, self._last, self._open).payload
        self._open = None
