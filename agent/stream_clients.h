// SPDX-License-Identifier: BSD-3-Clause
// The clients of listening streams (TCP, Unix sockets). Nothing here waits for one of them: their sockets never block,
// and whoever does not take its answers is let go.
#pragma once

#include "message_boundary.h"
#include "net_snmp.h"

#include <chrono>
#include <functional>
#include <map>

namespace ipmib::agent
{

class StreamClients
{
  public:
    // There is one: the library's transports know no owner.
    static StreamClients &all();

    // From here on the library hands over the lines about connections (maxConnections, connectionIdleTime) whenever it
    // reads the files of this type.
    void readSettingsFrom(const char *fileType);

    // Takes charge of a transport that listens, and of all connections to it. `longest`: of a message, in octets.
    void takeCharge(netsnmp_transport &listening, std::size_t longest);

    // Called with the transport of each client whose connection ends. There is one handler.
    void onClose(std::function<void(const netsnmp_transport &)> handler) { closed_ = std::move(handler); }

    // Leaves one client in a set of readable descriptors, the next in turn, and those who have been let go. So whoever
    // asks over UDP, or comes in new, waits for one request at most.
    void leaveOne(netsnmp_large_fd_set &readable);

  private:
    using Clock = std::chrono::steady_clock;

    // What the library does for transports of one kind.
    struct Kind {
        int (*receive)(netsnmp_transport *, void *, int, void **, int *);
        int (*accept)(netsnmp_transport *);
        int (*close)(netsnmp_transport *);
    };

    struct Client {
        MessageBoundary boundary;
        Clock::time_point lastHeard; // a whole message
        bool isLetGo = false;        // its connection is shut down; the library closes it when it reads its end
    };

    StreamClients();

    // In the place of the library's, with its arguments and results.
    static int accept(netsnmp_transport *listening);
    static int receive(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length);
    static int send(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length);
    static int sendNow(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length);
    static int close(netsnmp_transport *transport);

    void takeIn(int descriptor);
    void turnAway(const netsnmp_transport &listening);
    std::size_t mayTake(const Client &client, const netsnmp_transport &transport) const;
    static void letGo(int descriptor, Client &client);
    void letLongestSilentGo();
    void letIdleOnesGo();

    std::map<const oid *, Kind> kinds_; // by the domain of their transports
    std::map<int, Client> clients_;     // by descriptor
    std::size_t longest_ = 0;
    long maxConnections_;
    long idleTime_; // seconds
    int lastServed_ = -1;
    int reserve_ = -1; // a descriptor to turn connections away with when there are no others
    unsigned alarm_ = 0;
    std::function<void(const netsnmp_transport &)> closed_;
};

} // namespace ipmib::agent
