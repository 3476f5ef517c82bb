# SPDX-License-Identifier: BSD-3-Clause
"""An agent on loopback that answers from a list of values, as the standards say; a fault overrides one of its methods."""
import bisect
import socket
import threading

from snmp import (COUNTER64, END_OF_MIB_VIEW, GET, GETBULK, GETNEXT, NO_ERROR, NO_SUCH_INSTANCE, NO_SUCH_NAME,
                  NO_SUCH_OBJECT, NOT_WRITABLE, RESPONSE, SET, V1, Message)


class Refused(Exception):
    """The request is answered with this error, at the place of the variable."""


class ScriptedAgent:
    def __init__(self, values, columns):
        self.values = dict(values)  # (tag, value) by identifier
        self.columns = columns  # and scalars: identifiers of all that there may be instances of
        self.packets = 0
        self.change()
        self.names = sorted(self.values)
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.bind(("127.0.0.1", 0))
        self.port = self._socket.getsockname()[1]
        self._thread = threading.Thread(target=self._serve, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as stop:
            stop.sendto(b"", ("127.0.0.1", self.port))
        self._thread.join()
        self._socket.close()

    def _serve(self):
        while True:
            data, client = self._socket.recvfrom(65535)
            if not data:
                return
            self.packets += 1
            for answer in self.answers(Message.read(data)):
                self._socket.sendto(answer, client)

    # What faults override.

    def change(self):
        """The values, before anybody asks."""

    def answers(self, request):
        """The packets that a request is answered with."""
        return [self.answer(request).bytes()]

    def answer(self, request):
        """The response to a request."""
        if request.kind == GETBULK:
            return self.response(request, self.all_of_bulk([name for name, _, _ in request.variables],
                                                           request.first, request.second))
        variables = []
        for place, variable in enumerate(request.variables, 1):
            try:
                variables.append(self.one(request, *variable))
            except Refused as refused:
                return self.response(request, request.variables, refused.args[0], place)
        return self.response(request, variables)

    @staticmethod
    def response(request, variables, error=NO_ERROR, place=0):
        return Message(request.version, RESPONSE, request.request, error, place, variables)

    def one(self, request, name, tag, value):
        if request.kind == SET:
            if request.version == V1:
                raise Refused(NO_SUCH_NAME)  # its word for notWritable
            return self.set(name, tag, value)
        found = self.get(name) if request.kind == GET else self.get_next(name)
        return self.for_version1(request.kind, found) if request.version == V1 else found

    def for_version1(self, kind, found):
        while found[1] == COUNTER64 and kind == GETNEXT:
            found = self.get_next(found[0])
        if found[1] in (NO_SUCH_OBJECT, NO_SUCH_INSTANCE, END_OF_MIB_VIEW, COUNTER64):
            raise Refused(NO_SUCH_NAME)
        return found

    def get(self, name):
        return (name, *self.value(name)) if name in self.values else self.absent(name)

    def absent(self, name):
        is_instance = any(name[:size] in self.columns for size in range(len(name)))
        return name, NO_SUCH_INSTANCE if is_instance else NO_SUCH_OBJECT, b""

    def get_next(self, name):
        place = bisect.bisect_right(self.names, name)
        if place == len(self.names):
            return name, END_OF_MIB_VIEW, b""
        return (self.names[place], *self.value(self.names[place]))

    def all_of_bulk(self, names, non_repeaters, repetitions):
        columns = [self.get_bulk(name, repetitions) for name in names[non_repeaters:]]
        return [self.get_next(name) for name in names[:non_repeaters]] + [each for row in zip(*columns) for each in row]

    def get_bulk(self, name, repetitions):
        variables = []
        for _ in range(repetitions):
            variables.append(self.get_next(name))
            name = variables[-1][0]
        return variables

    def set(self, name, tag, value):
        raise Refused(NOT_WRITABLE)

    def value(self, name):
        return self.values[name]
