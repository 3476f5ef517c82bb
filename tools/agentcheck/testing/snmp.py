# SPDX-License-Identifier: BSD-3-Clause
"""As much of SNMPv1 and SNMPv2c as a scripted agent needs: messages as bytes, both ways."""
import socket

GET, GETNEXT, RESPONSE, SET, GETBULK = 0xA0, 0xA1, 0xA2, 0xA3, 0xA5
INTEGER, OCTETS, NULL, OID = 0x02, 0x04, 0x05, 0x06
IPADDRESS, COUNTER32, UNSIGNED32, TIMETICKS, COUNTER64 = 0x40, 0x41, 0x42, 0x43, 0x46
NO_SUCH_OBJECT, NO_SUCH_INSTANCE, END_OF_MIB_VIEW = 0x80, 0x81, 0x82
NO_ERROR, TOO_BIG, NO_SUCH_NAME, GEN_ERR, NOT_WRITABLE = 0, 1, 2, 5, 17
SEQUENCE = 0x30
NUMBERS = {INTEGER, COUNTER32, UNSIGNED32, TIMETICKS, COUNTER64}
V1, V2C = 0, 1


def item(tag, content):
    size = len(content)
    if size < 128:
        return bytes([tag, size]) + content
    length = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([tag, 128 | len(length)]) + length + content


def number(value, tag=INTEGER):
    return item(tag, value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True))


def identifier(oid):
    content = b""
    for sub_id in (40 * oid[0] + oid[1],) + tuple(oid[2:]):
        part = [sub_id & 127]
        while sub_id := sub_id >> 7:
            part.insert(0, 128 | sub_id & 127)
        content += bytes(part)
    return item(OID, content)


def value(tag, content):
    if tag in NUMBERS:
        return number(content, tag)
    return identifier(content) if tag == OID else item(tag, content)


def split(data):
    """The first item of the data: tag, content, and what follows."""
    size, begin = data[1], 2
    if size & 128:
        begin += size & 127
        size = int.from_bytes(data[2:begin], "big")
    return data[0], data[begin : begin + size], data[begin + size :]


def split_all(data):
    while data:
        tag, content, data = split(data)
        yield tag, content


def read_number(content):
    return int.from_bytes(content, "big", signed=True)


def read_identifier(content):
    sub_ids, sub_id = [], 0
    for octet in content:
        sub_id = sub_id << 7 | octet & 127
        if not octet & 128:
            sub_ids.append(sub_id)
            sub_id = 0
    first = min(sub_ids[0] // 40, 2)
    return (first, sub_ids[0] - 40 * first) + tuple(sub_ids[1:])


def read_value(tag, content):
    if tag in NUMBERS:
        return read_number(content)
    return read_identifier(content) if tag == OID else content


class Message:
    """A request or a response; variables are (identifier, tag, value)."""

    def __init__(self, version, kind, request, first, second, variables):
        self.version, self.kind, self.request = version, kind, request
        self.first, self.second = first, second  # error and its place; of GETBULK the two numbers
        self.variables = variables

    @staticmethod
    def read(data):
        (_, version), _, (kind, pdu) = split_all(split(data)[1])
        (_, request), (_, first), (_, second), (_, variables) = split_all(pdu)
        found = []
        for _, variable in split_all(variables):
            (_, name), (tag, content) = split_all(variable)
            found.append((read_identifier(name), tag, read_value(tag, content)))
        return Message(version[0], kind, read_number(request), read_number(first), read_number(second), found)

    def bytes(self):
        variables = b"".join(item(SEQUENCE, identifier(name) + value(tag, content))
                             for name, tag, content in self.variables)
        pdu = item(self.kind, number(self.request) + number(self.first) + number(self.second) +
                   item(SEQUENCE, variables))
        return item(SEQUENCE, number(self.version) + item(OCTETS, b"public") + pdu)


def record(port, root):
    """All that an agent on loopback has below the root: (tag, value) by identifier."""
    found = {}
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
        client.settimeout(60)
        at, ended = root, False
        while not ended:
            request = Message(V2C, GETBULK, len(found), 0, 40, [(at, NULL, b"")])
            client.sendto(request.bytes(), ("127.0.0.1", port))
            for at, tag, content in Message.read(client.recv(65535)).variables:
                ended = tag == END_OF_MIB_VIEW or at[: len(root)] != root
                if ended:
                    break
                found[at] = (tag, content)
    return found
