// SPDX-License-Identifier: BSD-3-Clause
// Which datagrams the accounting table counts, and where on their way: its chains and rules.
#include "accounting/accounting_table.h"

#include <linux/ip.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nf_tables.h>

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

void addChain(NftMessages &batch, const Chain &wanted)
{
    NftMessage chain = batch.add(NFT_MSG_NEWCHAIN, NLM_F_CREATE);
    chain.put(NFTA_CHAIN_TABLE, accountingTableName);
    chain.put(NFTA_CHAIN_NAME, wanted.name);
    chain.put(NFTA_CHAIN_TYPE, "filter");
    chain.nest(NFTA_CHAIN_HOOK, [&] {
        chain.put(NFTA_HOOK_HOOKNUM, wanted.hook);
        chain.put(NFTA_HOOK_PRIORITY, static_cast<std::uint32_t>(wanted.priority));
    });
    chain.put(NFTA_CHAIN_POLICY, NF_ACCEPT);
}

template <class Fill>
void addExpression(NftMessage &rule, const char *name, Fill fill)
{
    rule.nest(NFTA_LIST_ELEM, [&] {
        rule.put(NFTA_EXPR_NAME, name);
        rule.nest(NFTA_EXPR_DATA, fill);
    });
}

void compare(NftMessage &rule, nft_cmp_ops operation, std::uint32_t address)
{
    addExpression(rule, "cmp", [&] {
        rule.put(NFTA_CMP_SREG, NFT_REG_1);
        rule.put(NFTA_CMP_OP, operation);
        rule.nest(NFTA_CMP_DATA, [&] { rule.put(NFTA_DATA_VALUE, address); });
    });
}

void matchDestination(NftMessage &rule, Destination destination)
{
    if (destination == Destination::any) {
        return;
    }
    addExpression(rule, "payload", [&] {
        rule.put(NFTA_PAYLOAD_DREG, NFT_REG_1);
        rule.put(NFTA_PAYLOAD_BASE, NFT_PAYLOAD_NETWORK_HEADER);
        rule.put(NFTA_PAYLOAD_OFFSET, offsetof(iphdr, daddr));
        rule.put(NFTA_PAYLOAD_LEN, sizeof(iphdr::daddr));
    });
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

void countInterface(NftMessage &rule, std::uint32_t interface, const char *set)
{
    addExpression(rule, "meta", [&] {
        rule.put(NFTA_META_DREG, NFT_REG_1);
        rule.put(NFTA_META_KEY, interface);
    });
    addExpression(rule, "dynset", [&] {
        rule.put(NFTA_DYNSET_OP, NFT_DYNSET_OP_UPDATE);
        rule.put(NFTA_DYNSET_SREG_KEY, NFT_REG_1);
        rule.put(NFTA_DYNSET_SET_NAME, set);
        rule.nest(NFTA_DYNSET_EXPR, [&] { rule.put(NFTA_EXPR_NAME, "counter"); });
    });
}

void addRule(NftMessages &batch, const Chain &chain, const Rule &wanted)
{
    NftMessage rule = batch.add(NFT_MSG_NEWRULE, NLM_F_CREATE | NLM_F_APPEND);
    rule.put(NFTA_RULE_TABLE, accountingTableName);
    rule.put(NFTA_RULE_CHAIN, chain.name);
    rule.nest(NFTA_RULE_EXPRESSIONS, [&] {
        matchDestination(rule, wanted.destination);
        countInterface(rule, chain.interface, wanted.set);
    });
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
