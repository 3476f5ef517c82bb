// SPDX-License-Identifier: BSD-3-Clause
// Which datagrams the accounting table counts, and where on their way: its chains and rules.
#include "accounting/accounting_table.h"
#include "accounting/nft_objects.h"

#include <libnftnl/expr.h>
#include <linux/ip.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nf_tables.h>

#include <endian.h>

#include <climits>
#include <cstddef>
#include <initializer_list>

namespace ipmib::platform
{

namespace
{

// Before every table that may drop; behind the bridge filter's own hook at INT_MIN, which takes packets that it has
// already shown to these hooks out of their way.
constexpr int firstPriority = INT_MIN + 1;
constexpr int lastPriority = INT_MAX; // behind every table that may drop or rewrite

enum class Destination { any, unicast, multicast, multicastOrBroadcast };

struct Rule {
    Destination destination;
    const char *set;
};

struct Chain {
    const char *name;
    std::uint32_t hook;
    int priority;
    std::uint32_t interface; // which of the packet's interfaces is counted
    std::initializer_list<Rule> rules;
};

// A datagram to a group or to everybody is counted as sent where it leaves the protocols or the router's forwarding:
// the kernel shows the copy that it loops back to this host to the last hook as well, and such a datagram would count
// twice there.
constexpr Chain chains[] = {
    {"received",
     NF_INET_PRE_ROUTING,
     firstPriority,
     NFT_META_IIF,
     {{Destination::any, "in"}, {Destination::multicast, "in_multicast"}}},
    {"requested", NF_INET_LOCAL_OUT, firstPriority, NFT_META_OIF, {{Destination::any, "requested"}}},
    {"requested_last",
     NF_INET_LOCAL_OUT,
     lastPriority,
     NFT_META_OIF,
     {{Destination::multicastOrBroadcast, "out"}, {Destination::multicast, "out_multicast"}}},
    {"forwarded",
     NF_INET_FORWARD,
     lastPriority,
     NFT_META_OIF,
     {{Destination::any, "forwarded"},
      {Destination::multicastOrBroadcast, "out"},
      {Destination::multicast, "out_multicast"}}},
    {"sent", NF_INET_POST_ROUTING, lastPriority, NFT_META_OIF, {{Destination::unicast, "out"}}},
};

nftnl_expr *expression(const char *name)
{
    return allocated(nftnl_expr_alloc(name));
}

void addChain(NftMessages &batch, const Chain &wanted)
{
    const ChainObject chain(allocated(nftnl_chain_alloc()));
    nftnl_chain_set_str(chain.get(), NFTNL_CHAIN_TABLE, accountingTableName);
    nftnl_chain_set_str(chain.get(), NFTNL_CHAIN_NAME, wanted.name);
    nftnl_chain_set_str(chain.get(), NFTNL_CHAIN_TYPE, "filter");
    nftnl_chain_set_u32(chain.get(), NFTNL_CHAIN_HOOKNUM, wanted.hook);
    nftnl_chain_set_s32(chain.get(), NFTNL_CHAIN_PRIO, wanted.priority);
    nftnl_chain_set_u32(chain.get(), NFTNL_CHAIN_POLICY, NF_ACCEPT);
    nftnl_chain_nlmsg_build_payload(batch.add(NFT_MSG_NEWCHAIN, NLM_F_CREATE), chain.get());
}

void compare(nftnl_rule &rule, nft_cmp_ops operation, std::uint32_t address)
{
    const std::uint32_t network = htobe32(address);
    nftnl_expr *comparison = expression("cmp");
    nftnl_expr_set_u32(comparison, NFTNL_EXPR_CMP_SREG, NFT_REG_1);
    nftnl_expr_set_u32(comparison, NFTNL_EXPR_CMP_OP, operation);
    nftnl_expr_set(comparison, NFTNL_EXPR_CMP_DATA, &network, sizeof network);
    nftnl_rule_add_expr(&rule, comparison);
}

void matchDestination(nftnl_rule &rule, Destination destination)
{
    if (destination == Destination::any) {
        return;
    }
    nftnl_expr *load = expression("payload");
    nftnl_expr_set_u32(load, NFTNL_EXPR_PAYLOAD_BASE, NFT_PAYLOAD_NETWORK_HEADER);
    nftnl_expr_set_u32(load, NFTNL_EXPR_PAYLOAD_OFFSET, offsetof(iphdr, daddr));
    nftnl_expr_set_u32(load, NFTNL_EXPR_PAYLOAD_LEN, sizeof(iphdr::daddr));
    nftnl_expr_set_u32(load, NFTNL_EXPR_PAYLOAD_DREG, NFT_REG_1);
    nftnl_rule_add_expr(&rule, load);
    // Addresses are compared byte by byte from the front, which is their order.
    constexpr std::uint32_t firstGroup = 0xE0000000; // 224.0.0.0
    constexpr std::uint32_t lastGroup = 0xEFFFFFFF;
    if (destination == Destination::unicast) {
        compare(rule, NFT_CMP_LT, firstGroup);
    } else {
        compare(rule, NFT_CMP_GTE, firstGroup);
    }
    if (destination == Destination::multicast) {
        compare(rule, NFT_CMP_LTE, lastGroup);
    }
}

void countInterface(nftnl_rule &rule, std::uint32_t interface, const char *set)
{
    nftnl_expr *load = expression("meta");
    nftnl_expr_set_u32(load, NFTNL_EXPR_META_KEY, interface);
    nftnl_expr_set_u32(load, NFTNL_EXPR_META_DREG, NFT_REG_1);
    nftnl_rule_add_expr(&rule, load);

    nftnl_expr *update = expression("dynset");
    nftnl_expr_set_u32(update, NFTNL_EXPR_DYNSET_OP, NFT_DYNSET_OP_UPDATE);
    nftnl_expr_set_u32(update, NFTNL_EXPR_DYNSET_SREG_KEY, NFT_REG_1);
    nftnl_expr_set_str(update, NFTNL_EXPR_DYNSET_SET_NAME, set);
    nftnl_expr_add_expr(update, NFTNL_EXPR_DYNSET_EXPR, expression("counter"));
    nftnl_rule_add_expr(&rule, update);
}

void addRule(NftMessages &batch, const Chain &chain, const Rule &wanted)
{
    const RuleObject rule(allocated(nftnl_rule_alloc()));
    nftnl_rule_set_str(rule.get(), NFTNL_RULE_TABLE, accountingTableName);
    nftnl_rule_set_str(rule.get(), NFTNL_RULE_CHAIN, chain.name);
    matchDestination(*rule, wanted.destination);
    countInterface(*rule, chain.interface, wanted.set);
    nftnl_rule_nlmsg_build_payload(batch.add(NFT_MSG_NEWRULE, NLM_F_CREATE | NLM_F_APPEND), rule.get());
}

} // namespace

void addAccountingChains(NftMessages &batch)
{
    for (const Chain &chain : chains) {
        addChain(batch, chain);
        for (const Rule &rule : chain.rules) {
            addRule(batch, chain, rule);
        }
    }
}

} // namespace ipmib::platform
