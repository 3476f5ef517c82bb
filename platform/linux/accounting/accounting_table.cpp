// SPDX-License-Identifier: BSD-3-Clause
// The packet filter's table that counts IPv4 traffic by interface: the table, its sets and their elements.
#include "accounting/accounting_table.h"

#include "accounting/nft_objects.h"
#include "core/attributes.h"

#include <endian.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>

#include <string_view>

namespace ipmib::platform
{

namespace
{

constexpr std::uint32_t ifaceIndexType = 20; // nft's number of the type iface_index, so that it lists names

void addTableMessage(NftMessages &batch, std::uint16_t type, std::uint16_t messageFlags, std::uint32_t tableFlags = 0)
{
    const TableObject table(allocated(nftnl_table_alloc()));
    nftnl_table_set_u32(table.get(), NFTNL_TABLE_FAMILY, NFPROTO_IPV4);
    nftnl_table_set_str(table.get(), NFTNL_TABLE_NAME, accountingTableName);
    if (tableFlags != 0) {
        nftnl_table_set_u32(table.get(), NFTNL_TABLE_FLAGS, tableFlags);
    }
    nftnl_table_nlmsg_build_payload(batch.add(type, messageFlags), table.get());
}

SetObject namedSet(const char *name)
{
    SetObject set(allocated(nftnl_set_alloc()));
    nftnl_set_set_str(set.get(), NFTNL_SET_TABLE, accountingTableName);
    nftnl_set_set_str(set.get(), NFTNL_SET_NAME, name);
    return set;
}

void addSet(NftMessages &batch, const CountedSet &counted, std::uint32_t size)
{
    const SetObject set = namedSet(counted.name);
    nftnl_set_set_u32(set.get(), NFTNL_SET_FAMILY, NFPROTO_IPV4);
    nftnl_set_set_u32(set.get(), NFTNL_SET_ID, static_cast<std::uint32_t>(&counted - countedSets) + 1);
    nftnl_set_set_u32(set.get(), NFTNL_SET_FLAGS, NFT_SET_EVAL);
    nftnl_set_set_u32(set.get(), NFTNL_SET_KEY_TYPE, ifaceIndexType);
    nftnl_set_set_u32(set.get(), NFTNL_SET_KEY_LEN, sizeof(std::uint32_t));
    if (size != 0) {
        nftnl_set_set_u32(set.get(), NFTNL_SET_DESC_SIZE, size);
    }
    // For nft alone: it shows names for indexes when it knows that they are in the machine's order.
    constexpr std::uint32_t hostOrder = 1;
    const UdataObject udata(allocated(nftnl_udata_buf_alloc(NFT_USERDATA_MAXLEN)));
    nftnl_udata_put_u32(udata.get(), NFTNL_UDATA_SET_KEYBYTEORDER, hostOrder);
    nftnl_set_set_data(set.get(), NFTNL_SET_USERDATA, nftnl_udata_buf_data(udata.get()),
                       nftnl_udata_buf_len(udata.get()));
    nftnl_set_nlmsg_build_payload(batch.add(NFT_MSG_NEWSET, NLM_F_CREATE), set.get());
}

void addElementMessage(NftMessages &messages, std::uint16_t type, const CountedSet &counted, std::uint32_t ifIndex)
{
    const SetObject set = namedSet(counted.name);
    nftnl_set_elem *element = allocated(nftnl_set_elem_alloc());
    nftnl_set_elem_set(element, NFTNL_SET_ELEM_KEY, &ifIndex, sizeof ifIndex);
    nftnl_set_elem_add(set.get(), element);
    nftnl_set_elems_nlmsg_build_payload(messages.add(type, 0), set.get());
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

// With no help of libnftnl, which ends the process when an answer is not as it expects.
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
