# SPDX-License-Identifier: BSD-3-Clause
"""How a fault is planted into an agent that is right otherwise."""
from catalogue import Catalogue
from scripted_agent import ScriptedAgent

catalogue = Catalogue()
FAULTS = []  # by title, the agent, the rule that it breaks, the object at which, and what is looked at


def oid(name, *instance):
    return catalogue.nodes[name].oid + instance


def is_below(name, *columns):
    return any(name[: len(oid(column))] == oid(column) for column in columns)


def planted(rule, where, tables):
    """Registers the agent, under the name of its class."""
    def register(agent):
        FAULTS.append((agent.__name__, agent, rule, where, tables))
        return agent
    return register


def changed(title, rule, tables, column, tag, value, where=None):
    """The first instance of a column has this value."""
    class Changed(ScriptedAgent):
        def change(self):
            self.values[first_of(self.values, column)] = (tag, value)
    FAULTS.append((title, Changed, rule, where or column, tables))


def moved(title, rule, tables, column, instance, where=None):
    """All columns of the row of the first instance of a column stand under another instance."""
    class Moved(ScriptedAgent):
        def change(self):
            before = first_of(self.values, column)[len(oid(column)) :]
            for name in [name for name in self.values if name[: len(oid(column)) - 1] == oid(column)[:-1]]:
                if name[len(oid(column)) :] == before:
                    self.values[name[: len(oid(column))] + instance] = self.values.pop(name)
    FAULTS.append((title, Moved, rule, where or column, tables))


def first_of(values, column):
    return min(name for name in values if is_below(name, column))


ADDRESSES = "ipAddressTable"
NEIGHBOURS = "ipNetToPhysicalTable"
ROUTES = "inetCidrRouteTable"
LINK_LOCAL = (254, 128) + 13 * (0,) + (1,)
PREFIX = (1, 3, 6, 1, 2, 1, 4, 32, 1)
CONNECTIONS = "tcpConnectionTable"
LISTENERS = "tcpListenerTable"
ENDPOINTS = "udpEndpointTable"
UP_TIME = (1, 3, 6, 1, 2, 1, 1, 3, 0)
IPV6 = (32, 1, 13, 184) + 11 * (0,) + (1,)
