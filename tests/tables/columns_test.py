#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Every column of the IP-MIB's tables and groups of IPv4, of a device on which no two things are the same: by GET, and by a walk,
which has no others. The argument is ipmibd."""
import sys
import unittest

from column_check import ColumnCheck, catalogue

WIDE = 1 << 33  # what only 64 bits show
UPTIME = 1000

# What a scenario calls a counter, what the tables call it behind their own names, and whether they have it in 64 bits.
IP_COUNTERS = [
    ("inReceives", "InReceives", True), ("inOctets", "InOctets", True), ("inHdrErrors", "InHdrErrors", False),
    ("inNoRoutes", "InNoRoutes", False), ("inAddrErrors", "InAddrErrors", False),
    ("inUnknownProtos", "InUnknownProtos", False), ("inTruncatedPkts", "InTruncatedPkts", False),
    ("inForwDatagrams", "InForwDatagrams", True), ("reasmReqds", "ReasmReqds", False), ("reasmOKs", "ReasmOKs", False),
    ("reasmFails", "ReasmFails", False), ("inDiscards", "InDiscards", False), ("inDelivers", "InDelivers", True),
    ("outRequests", "OutRequests", True), ("outNoRoutes", "OutNoRoutes", False),
    ("outForwDatagrams", "OutForwDatagrams", True), ("outDiscards", "OutDiscards", False),
    ("outFragReqds", "OutFragReqds", False), ("outFragOKs", "OutFragOKs", False),
    ("outFragFails", "OutFragFails", False), ("outFragCreates", "OutFragCreates", False),
    ("outTransmits", "OutTransmits", True), ("outOctets", "OutOctets", True), ("inMcastPkts", "InMcastPkts", True),
    ("inMcastOctets", "InMcastOctets", True), ("outMcastPkts", "OutMcastPkts", True),
    ("outMcastOctets", "OutMcastOctets", True), ("inBcastPkts", "InBcastPkts", True),
    ("outBcastPkts", "OutBcastPkts", True)]
IP_SCALARS = {  # by what a scenario calls the counter
    "inReceives": "ipInReceives", "inHdrErrors": "ipInHdrErrors", "inAddrErrors": "ipInAddrErrors",
    "inForwDatagrams": "ipForwDatagrams", "inUnknownProtos": "ipInUnknownProtos", "inDiscards": "ipInDiscards",
    "inDelivers": "ipInDelivers", "outRequests": "ipOutRequests", "outDiscards": "ipOutDiscards",
    "outNoRoutes": "ipOutNoRoutes", "reasmReqds": "ipReasmReqds", "reasmOKs": "ipReasmOKs",
    "reasmFails": "ipReasmFails", "outFragOKs": "ipFragOKs", "outFragFails": "ipFragFails",
    "outFragCreates": "ipFragCreates", "routingDiscards": "ipRoutingDiscards"}
ICMP_SCALARS = {3: "DestUnreachs", 11: "TimeExcds", 12: "ParmProbs", 4: "SrcQuenchs", 5: "Redirects", 8: "Echos",
                0: "EchoReps", 13: "Timestamps", 14: "TimestampReps", 17: "AddrMasks", 18: "AddrMaskReps"}
TCP = {"activeOpens": "tcpActiveOpens", "passiveOpens": "tcpPassiveOpens", "attemptFails": "tcpAttemptFails",
       "estabResets": "tcpEstabResets", "inSegs": "tcpInSegs", "outSegs": "tcpOutSegs",
       "retransSegs": "tcpRetransSegs", "inErrs": "tcpInErrs", "outRsts": "tcpOutRsts"}
UDP = {"inDatagrams": "udpInDatagrams", "noPorts": "udpNoPorts", "inErrors": "udpInErrors",
       "outDatagrams": "udpOutDatagrams"}


def ip_counters(base):
    """Each has a number of its own, beyond 32 bits."""
    return {name: WIDE + base + i for i, (name, _, _) in enumerate(IP_COUNTERS)}


def numbered(names, base):
    return {name: base + i for i, name in enumerate(names)}


SYSTEM_IPV4 = ip_counters(100) | {"routingDiscards": 77}
# What is counted of IPv4 on one interface; of all else there is no instance.
COUNTED = ["inReceives", "inOctets", "inDiscards", "outRequests", "outForwDatagrams", "outDiscards",
           "outTransmits", "outOctets", "inMcastPkts", "outMcastPkts"]
INTERFACE_IPV4 = {name: number for name, number in ip_counters(300).items() if name in COUNTED}
ALL_OF_INTERFACE_IPV4 = {name: number for name, number in ip_counters(400).items() if name != "outNoRoutes"}  # the table has not got it
ICMP_TYPES = {number: {"in": 500 + 2 * i, "out": 501 + 2 * i} for i, number in enumerate(sorted(ICMP_SCALARS))}
TCP_COUNTERS = {name: WIDE + number if name in ("inSegs", "outSegs") else number
                for name, number in numbered(TCP, 600).items()}
UDP_COUNTERS = {name: WIDE + number if name.endswith("Datagrams") else number
                for name, number in numbered(UDP, 700).items()}
SCENARIO = {
    "uptime": UPTIME,
    "interfaces": [
        {"name": "wan", "ifIndex": 2, "mac": "02:00:5e:00:53:01", "mtu": 1492, "ipv4RetransmitTime": 1234,
         "ipv4Addresses": [
             {"address": "203.0.113.53/24", "broadcast": "203.0.113.255", "origin": "dhcp", "status": "deprecated",
              "created": 13, "changed": 14}],
         "ipv4Prefixes": [{"prefix": "203.0.113.0/24", "origin": "dhcp", "onLink": True, "autonomous": True,
                           "valid": 900, "preferred": 800}],
         "ipv4Neighbours": [{"address": "203.0.113.1", "mac": "02:00:5e:00:53:fe", "state": "delay", "updated": 998}],
         "ipv4Routers": [{"address": "203.0.113.1", "preference": "low", "lifetime": 1800}],
         "counters": {"ipv4": INTERFACE_IPV4}},
        {"name": "line", "ifIndex": 7, "ipv6": False, "mtu": 576, "ipv4Addresses": ["192.0.2.129/26"],
         "counters": {"ipv4": ALL_OF_INTERFACE_IPV4}}],
    "ipv4": {"forwarding": True, "defaultTtl": 61, "reasmTimeout": 29},
    "system": {"ipv4": SYSTEM_IPV4, "tcp": TCP_COUNTERS, "tcpConnections": 4, "udp": UDP_COUNTERS,
               "ipv4Icmp": {"inMsgs": 801, "outMsgs": 802, "inErrors": 803,
                            "types": {str(number): counts for number, counts in ICMP_TYPES.items()}}},
}
# Tables and groups that are expected as a whole, as far as their rows are of IPv4.
WHOLE = ["ipv4InterfaceTable", "ipSystemStatsTable", "ipIfStatsTable", "ipAddressPrefixTable", "ipAddressTable",
         "ipNetToPhysicalTable", "ipDefaultRouterTable", "icmpStatsTable", "icmpMsgStatsTable",
         "ipv6ScopeZoneIndexTable", "tcp", "udp"]


def expected():
    """By object and instance, as texts."""
    rows = {}

    def tell(instance, **columns):
        for name, value in columns.items():
            rows[name, instance] = str(value)

    def tell_counters(table, instance, counters):
        for name, column, is_wide in IP_COUNTERS:
            if name not in counters:
                continue
            rows[table + column, instance] = str(counters[name] % (1 << 32))
            if is_wide:
                rows[table + "HC" + column, instance] = str(counters[name])
        tell(instance, **{table + "DiscontinuityTime": 0, table + "RefreshRate": 0})

    tell((2,), ipv4InterfaceReasmMaxSize=65535, ipv4InterfaceEnableStatus=1, ipv4InterfaceRetransmitTime=1234)
    tell((7,), ipv4InterfaceReasmMaxSize=65535, ipv4InterfaceEnableStatus=1, ipv4InterfaceRetransmitTime=1000)
    tell_counters("ipSystemStats", (1,), SYSTEM_IPV4)
    tell_counters("ipIfStats", (1, 2), INTERFACE_IPV4)
    tell_counters("ipIfStats", (1, 7), ALL_OF_INTERFACE_IPV4)
    tell((2, 1, 4, 203, 0, 113, 0, 24), ipAddressPrefixOrigin=4, ipAddressPrefixOnLinkFlag=1,
         ipAddressPrefixAutonomousFlag=1, ipAddressPrefixAdvPreferredLifetime=800, ipAddressPrefixAdvValidLifetime=900)
    tell((7, 1, 4, 192, 0, 2, 128, 26), ipAddressPrefixOrigin=2, ipAddressPrefixOnLinkFlag=1,
         ipAddressPrefixAutonomousFlag=2, ipAddressPrefixAdvPreferredLifetime=(1 << 32) - 1,
         ipAddressPrefixAdvValidLifetime=(1 << 32) - 1)
    prefix = ".1.3.6.1.2.1.4.32.1.5."
    for address, kind in (((203, 0, 113, 53), 1), ((203, 0, 113, 255), 3)):
        tell((1, 4) + address, ipAddressIfIndex=2, ipAddressType=kind, ipAddressPrefix=prefix + "2.1.4.203.0.113.0.24",
             ipAddressOrigin=4, ipAddressStatus=2, ipAddressCreated=1300, ipAddressLastChanged=1400,
             ipAddressRowStatus=1, ipAddressStorageType=2)
    tell((1, 4, 192, 0, 2, 129), ipAddressIfIndex=7, ipAddressType=1, ipAddressPrefix=prefix + "7.1.4.192.0.2.128.26",
         ipAddressOrigin=2, ipAddressStatus=1, ipAddressCreated=0, ipAddressLastChanged=0, ipAddressRowStatus=1,
         ipAddressStorageType=2)
    tell((2, 1, 4, 203, 0, 113, 1), ipNetToPhysicalPhysAddress="02 00 5E 00 53 FE", ipNetToPhysicalLastUpdated=99800,
         ipNetToPhysicalType=3, ipNetToPhysicalState=3, ipNetToPhysicalRowStatus=1)
    tell((1, 4, 203, 0, 113, 1, 2), ipDefaultRouterLifetime=1800, ipDefaultRouterPreference=-1)
    tell((1,), icmpStatsInMsgs=801, icmpStatsInErrors=803, icmpStatsOutMsgs=802, icmpStatsOutErrors=0)
    for number, counts in ICMP_TYPES.items():
        tell((1, number), icmpMsgStatsInPkts=counts["in"], icmpMsgStatsOutPkts=counts["out"])
        tell((0,), **{"icmpIn" + ICMP_SCALARS[number]: counts["in"], "icmpOut" + ICMP_SCALARS[number]: counts["out"]})
    tell((0,), icmpInMsgs=801, icmpInErrors=803, icmpOutMsgs=802, icmpOutErrors=0)
    tell((0,), ipForwarding=1, ipDefaultTTL=61, ipReasmTimeout=29, ipAddressSpinLock=0, ipv6RouterAdvertSpinLock=0,
         ipv4InterfaceTableLastChange=0, ipv6InterfaceTableLastChange=0, ipIfStatsTableLastChange=0)
    tell((0,), **{name: SYSTEM_IPV4[counter] % (1 << 32) for counter, name in IP_SCALARS.items()})
    tell((0,), **{name: TCP_COUNTERS[counter] % (1 << 32) for counter, name in TCP.items()})
    tell((0,), tcpRtoAlgorithm=4, tcpRtoMin=200, tcpRtoMax=120000, tcpMaxConn=-1, tcpCurrEstab=4,
         tcpHCInSegs=TCP_COUNTERS["inSegs"], tcpHCOutSegs=TCP_COUNTERS["outSegs"])
    tell((0,), **{name: UDP_COUNTERS[counter] % (1 << 32) for counter, name in UDP.items()})
    tell((0,), udpHCInDatagrams=UDP_COUNTERS["inDatagrams"], udpHCOutDatagrams=UDP_COUNTERS["outDatagrams"])
    for scope in ("LinkLocal", "3", "AdminLocal", "SiteLocal", "6", "7", "OrganizationLocal", "9", "A", "B", "C", "D"):
        rows["ipv6ScopeZoneIndex" + scope, (2,)] = "2" if scope == "LinkLocal" else "0"
    return rows


class Columns(ColumnCheck, unittest.TestCase):
    scenario = SCENARIO
    whole = WHOLE
    wanted = expected()

    def is_expected(self, oid):
        return catalogue.version(oid) != 6


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
