// SPDX-License-Identifier: BSD-3-Clause
// Reads the lists of lines, one after the other, in the order of their places below mib-2.
#include "tables/mib/descriptions.h"

namespace ipmib::tables
{
namespace
{

using namespace host::mib;

// What each list needs; the lists take their words away again.
#define IPMIB_SYNTAX(name, ...) const host::SyntaxText name = __VA_ARGS__;
#define IPMIB_NODE(parent, number, name, syntax, access, status)                                                       \
    mib.add(#parent, number, #name, syntax, MIB_ACCESS_##access, MIB_STATUS_##status);
#define IPMIB_INDEX(entry, ...) mib.index(#entry, {__VA_ARGS__});

void describeInterfaces(host::MibDescription &mib)
{
#define SYNTAX IPMIB_SYNTAX
#define NODE   IPMIB_NODE
#define INDEX  IPMIB_INDEX
#include "tables/mib/if_mib.def"
}

void describeForwarding(host::MibDescription &mib)
{
#define SYNTAX IPMIB_SYNTAX
#define NODE   IPMIB_NODE
#define INDEX  IPMIB_INDEX
#include "tables/mib/ip_forward_mib.def"
}

void describeTransport(host::MibDescription &mib)
{
#define SYNTAX IPMIB_SYNTAX
#define NODE   IPMIB_NODE
#define INDEX  IPMIB_INDEX
#include "tables/mib/transport_mib.def"
}

} // namespace

Descriptions::Descriptions() : mib_("mib_2", 1)
{
    describeInterfaces(mib_);
    describeForwarding(mib_);
    describeTransport(mib_);
}

} // namespace ipmib::tables
