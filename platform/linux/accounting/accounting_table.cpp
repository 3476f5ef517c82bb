// SPDX-License-Identifier: BSD-3-Clause
// The packet filter's table that counts IPv4 traffic by interface: the table, its sets and their elements.
#include "accounting/accounting_table.h"

#include "core/attributes.h"

#include <endian.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>

#include <cstring>
#include <string_view>

namespace ipmib::platform
{

namespace
{

void addTableMessage(NftMessages &messages, std::uint16_t type, std::uint16_t messageFlags,
                     std::uint32_t tableFlags = 0)
{
    NftMessage table = messages.add(type, messageFlags);
    table.put(NFTA_TABLE_NAME, accountingTableName);
    if (tableFlags != 0) {
        table.put(NFTA_TABLE_FLAGS, tableFlags);
    }
}

void addSet(NftMessages &batch, const CountedSet &counted, std::uint32_t size)
{
    NftMessage set = batch.add(NFT_MSG_NEWSET, NLM_F_CREATE);
    set.put(NFTA_SET_TABLE, accountingTableName);
    set.put(NFTA_SET_NAME, counted.name);
    set.put(NFTA_SET_ID, static_cast<std::uint32_t>(&counted - countedSets) + 1);
    set.put(NFTA_SET_FLAGS, NFT_SET_EVAL);
    set.put(NFTA_SET_KEY_LEN, sizeof(std::uint32_t));
    if (size != 0) {
        set.nest(NFTA_SET_DESC, [&] { set.put(NFTA_SET_DESC_SIZE, size); });
    }
    // For nft alone, which shows names for indexes when it knows the type and that it is in the machine's order.
    constexpr std::uint32_t ifaceIndexType = 20;
    set.put(NFTA_SET_KEY_TYPE, ifaceIndexType);
    struct {
        std::uint8_t type = 0; // the order of octets of a key
        std::uint8_t size = sizeof(std::uint32_t);
        std::uint8_t hostOrder[sizeof(std::uint32_t)];
    } note;
    constexpr std::uint32_t hostOrder = 1;
    std::memcpy(note.hostOrder, &hostOrder, sizeof hostOrder);
    set.put(NFTA_SET_USERDATA, &note, sizeof note);
}

void addElementMessage(NftMessages &messages, std::uint16_t type, const CountedSet &counted, std::uint32_t ifIndex)
{
    NftMessage set = messages.add(type, 0);
    set.put(NFTA_SET_ELEM_LIST_TABLE, accountingTableName);
    set.put(NFTA_SET_ELEM_LIST_SET, counted.name);
    set.nest(NFTA_SET_ELEM_LIST_ELEMENTS, [&] {
        set.nest(NFTA_LIST_ELEM,
                 [&] { set.nest(NFTA_SET_ELEM_KEY, [&] { set.put(NFTA_DATA_VALUE, &ifIndex, sizeof ifIndex); }); });
    });
}

std::uint64_t numberOf(const Attributes<NFTA_COUNTER_MAX> &counter, std::size_t which)
{
    return be64toh(counter.get<std::uint64_t>(which).value_or(0));
}

} // namespace

void addTable(NftMessages &batch, bool owned, std::uint32_t setSize)
{
    // Removing what is not there would fail the batch: so it is there, if for a moment that nobody can see.
    addTableMessage(batch, NFT_MSG_NEWTABLE, NLM_F_CREATE);
    removeTable(batch);
    addTableMessage(batch, NFT_MSG_NEWTABLE, NLM_F_CREATE, owned ? NFT_TABLE_F_OWNER : 0);
    for (const CountedSet &set : countedSets) {
        addSet(batch, set, setSize);
    }
    addAccountingChains(batch);
}

void removeTable(NftMessages &batch)
{
    addTableMessage(batch, NFT_MSG_DELTABLE, 0);
}

void removeElement(NftMessages &batch, const CountedSet &set, std::uint32_t ifIndex)
{
    addElementMessage(batch, NFT_MSG_DELSETELEM, set, ifIndex);
}

void askForTable(NftMessages &questions)
{
    addTableMessage(questions, NFT_MSG_GETTABLE, 0);
}

void askForElement(NftMessages &questions, const CountedSet &set, std::uint32_t ifIndex)
{
    addElementMessage(questions, NFT_MSG_GETSETELEM, set, ifIndex);
}

std::optional<Traffic> trafficOf(const nlmsghdr &answer)
{
    const Attributes<NFTA_SET_ELEM_LIST_MAX> list(answer, sizeof(nfgenmsg));
    const Attributes<NFTA_LIST_MAX> elements(list[NFTA_SET_ELEM_LIST_ELEMENTS]);
    const Attributes<NFTA_SET_ELEM_MAX> element(elements[NFTA_LIST_ELEM]);
    const Attributes<NFTA_EXPR_MAX> expression(element[NFTA_SET_ELEM_EXPR]);
    char name[16];
    expression.copyString(NFTA_EXPR_NAME, name);
    if (std::string_view(name) != "counter" || expression[NFTA_EXPR_DATA] == nullptr) {
        return std::nullopt;
    }
    const Attributes<NFTA_COUNTER_MAX> counter(expression[NFTA_EXPR_DATA]);
    return Traffic{numberOf(counter, NFTA_COUNTER_PACKETS), numberOf(counter, NFTA_COUNTER_BYTES)};
}

} // namespace ipmib::platform
