// SPDX-License-Identifier: BSD-3-Clause
// How long a change of a neighbour takes to be seen by a manager: adds, changes and removes one neighbour, and after
// each asks an agent until the answer is right. The clock runs from the kernel's acknowledgement of the change.
//
//   bench_neighbour_staleness AGENT INTERFACE CHANGES      AGENT as in snmpget, community "public"
#include "core/rtnetlink.h"

#include <net-snmp/net-snmp-config.h>
// The library's headers want their configuration first.
#include <net-snmp/net-snmp-includes.h>

#include <arpa/inet.h>
#include <linux/neighbour.h>
#include <net/if.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

using namespace ipmib::platform;
using Clock = std::chrono::steady_clock;

constexpr std::uint8_t address[16] = {0x20, 0x01, 0x0d, 0xb8, 0xff, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench_neighbour_staleness: %s\n", what);
    std::exit(1);
}

// Returns when the kernel has made the change. Without a link-layer address it removes the neighbour.
void change(Rtnetlink &kernel, unsigned ifIndex, const std::uint8_t *linkLayer)
{
    RtnetlinkRequest request(linkLayer ? RTM_NEWNEIGH : RTM_DELNEIGH,
                             linkLayer ? NLM_F_ACK | NLM_F_CREATE | NLM_F_REPLACE : NLM_F_ACK);
    ndmsg &header = request.family<ndmsg>();
    header.ndm_family = AF_INET6;
    header.ndm_ifindex = static_cast<int>(ifIndex);
    header.ndm_state = NUD_PERMANENT;
    mnl_attr_put(request.message(), NDA_DST, sizeof address, address);
    if (linkLayer) {
        mnl_attr_put(request.message(), NDA_LLADDR, 6, linkLayer);
    }
    if (kernel.ask(request, [](const nlmsghdr &) {}) != 0) {
        fail(kernel.error().c_str());
    }
}

class Agent
{
  public:
    explicit Agent(char *peer, unsigned ifIndex)
    {
        static char community[] = "public";
        snmp_disable_log();
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
        init_snmp("bench_neighbour_staleness");
        netsnmp_session session;
        snmp_sess_init(&session);
        session.version = SNMP_VERSION_2c;
        session.peername = peer;
        session.community = reinterpret_cast<u_char *>(community);
        session.community_len = std::strlen(community);
        handle_ = snmp_sess_open(&session);
        if (handle_ == nullptr) {
            fail("cannot reach the agent");
        }
        // ipNetToPhysicalPhysAddress.ifIndex.ipv6.16.address
        name_ = {1, 3, 6, 1, 2, 1, 4, 35, 1, 4, ifIndex, 2, 16};
        name_.insert(name_.end(), std::begin(address), std::end(address));
    }
    ~Agent() { snmp_sess_close(handle_); }
    Agent(const Agent &) = delete;
    Agent &operator=(const Agent &) = delete;

    // Whether the neighbour has this link-layer address, or is not there, when none is given.
    bool says(const std::uint8_t *linkLayer)
    {
        netsnmp_pdu *request = snmp_pdu_create(SNMP_MSG_GET);
        snmp_add_null_var(request, name_.data(), name_.size());
        netsnmp_pdu *answer = nullptr;
        if (snmp_sess_synch_response(handle_, request, &answer) != STAT_SUCCESS || answer == nullptr ||
            answer->errstat != SNMP_ERR_NOERROR) {
            fail("the agent does not answer");
        }
        const netsnmp_variable_list &value = *answer->variables;
        const bool right = linkLayer ? value.type == ASN_OCTET_STR && value.val_len == 6 &&
                                           !std::memcmp(value.val.string, linkLayer, 6)
                                     : value.type == SNMP_NOSUCHINSTANCE;
        snmp_free_pdu(answer);
        return right;
    }

  private:
    void *handle_ = nullptr;
    std::vector<oid> name_;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        fail("usage: bench_neighbour_staleness AGENT INTERFACE CHANGES");
    }
    const unsigned ifIndex = if_nametoindex(argv[2]);
    const int changes = std::atoi(argv[3]);
    Rtnetlink kernel;
    if (ifIndex == 0 || changes <= 0 || !kernel.open()) {
        fail("no such interface, no changes, or no netlink socket");
    }
    Agent agent(argv[1], ifIndex);
    const std::uint8_t one[6] = {2, 0, 0, 0, 0, 1};
    const std::uint8_t two[6] = {2, 0, 0, 0, 0, 2};
    const std::uint8_t *steps[] = {one, two, nullptr}; // added, changed, removed
    std::vector<double> delays;
    int wrong = 0;
    for (int i = 0; i < changes; ++i) {
        const std::uint8_t *linkLayer = steps[i % 3];
        change(kernel, ifIndex, linkLayer);
        const auto begin = Clock::now();
        while (!agent.says(linkLayer)) {
            ++wrong;
            if (Clock::now() - begin > std::chrono::seconds(120)) {
                fail("the agent does not notice a change within two minutes");
            }
        }
        delays.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    std::sort(delays.begin(), delays.end());
    std::printf("%d changes: median %.3f ms, maximum %.3f ms; answers that were still the old ones: %d\n", changes,
                delays[delays.size() / 2], delays.back(), wrong);
}
