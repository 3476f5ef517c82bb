// SPDX-License-Identifier: BSD-3-Clause
// Requests that come as datagrams. Those that wait in a socket are all taken out before anything is read for the first
// of them: what is read for that one is then as new as the others may expect, and a burst of requests is answered from
// one reading of the kernel.
#pragma once

#include "net_snmp.h"

#include <cstdint>
#include <deque>
#include <map>
#include <vector>

namespace ipmib::agent
{

class Datagrams
{
  public:
    // There is one: the library's transports know no owner.
    static Datagrams &all();

    // Takes charge of a transport that is no stream and whose socket does not block.
    void takeCharge(netsnmp_transport &transport);

    // Leaves the sockets in the set whose datagrams the library has to take, though they have been taken out; false
    // when there are none.
    bool leaveWaiting(netsnmp_large_fd_set &readable);

    // The library has one that did not wait here.
    void hasOneOfNow() { atHand_ = 0; }

    // The library answers a packet. False when that was taken out before the last one began, so that what was found out
    // for that one is good for this one.
    bool packetBegins();

  private:
    struct Datagram {
        std::vector<std::uint8_t> bytes;
        void *opaque = nullptr; // the library's: where it came from
        int opaqueLength = 0;
        std::uint64_t takenOut = 0;
    };
    using Receive = int (*)(netsnmp_transport *, void *, int, void **, int *);
    using Send = int (*)(netsnmp_transport *, const void *, int, void **, int *);

    // In the place of the library's, with its arguments and results.
    static int receive(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length);
    static int send(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length);
    static int sendNow(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length);

    void takeOut(netsnmp_transport &transport, std::deque<Datagram> &waiting);

    std::map<const oid *, Receive> receiveOfLibrary_; // by the domain of the transports
    std::map<const oid *, Send> sendOfLibrary_;
    std::map<int, std::deque<Datagram>> waiting_; // by socket
    std::uint64_t takenOut_ = 0;                  // how often
    std::uint64_t begun_ = 0;                     // `takenOut_` when a packet last began
    std::uint64_t atHand_ = 0;                    // `takenOut` of the datagram that the library has; 0 for one of now
};

} // namespace ipmib::agent
