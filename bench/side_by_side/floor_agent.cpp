// SPDX-License-Identifier: BSD-3-Clause
// The agent with a table that costs nothing: what the SNMP library itself takes for a walk. Everything of ipmibd in
// front of the front end is here (listeners, event loop, the library as it is set up there); behind it stands a handler
// that reads a row's number out of its identifier. The rows look as those of ipNetToPhysicalTable: their identifiers
// are as long, their values of the same types.
//
//   bench_floor_agent CONFIGURATION ADDRESS ROWS
#include "agent/event_loop.h"
#include "agent/listeners.h"
#include "agent/snmp_library.h"
#include "agent/varbind.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace
{

using namespace ipmib;

const oid entry[] = {1, 3, 6, 1, 2, 1, 4, 35, 1};
constexpr std::size_t columnAt = std::size(entry);
constexpr std::size_t nameLength = columnAt + 1 + 1 + 1 + 1 + 16; // column, interface, type, length, address
constexpr oid firstColumn = 4;
constexpr oid lastColumn = 8;

oid rows = 0;

oid numberOf(const netsnmp_variable_list &variable)
{
    const oid *end = variable.name + variable.name_length;
    return variable.name_length < nameLength ? 0 : end[-4] << 24 | end[-3] << 16 | end[-2] << 8 | end[-1];
}

void answer(netsnmp_variable_list &variable, oid column, oid row)
{
    oid name[nameLength] = {1, 3, 6, 1, 2, 1, 4, 35, 1, column, 3, 2, 16, 0x20, 0x01, 0x0d, 0xb8};
    name[nameLength - 4] = row >> 24 & 0xff;
    name[nameLength - 3] = row >> 16 & 0xff;
    name[nameLength - 2] = row >> 8 & 0xff;
    name[nameLength - 1] = row & 0xff;
    snmp_set_var_objid(&variable, name, nameLength);
    static const std::uint8_t linkLayer[6] = {2, 0, 0, 0, 0, 1};
    host::Value value;
    value.number = 3;
    if (column == firstColumn) {
        value.type = host::ValueType::octets;
        value.octets = linkLayer;
    } else if (column == firstColumn + 1) {
        value.type = host::ValueType::timeTicks;
    }
    agent::setValue(variable, value);
}

// False when it is not there.
bool next(netsnmp_variable_list &variable)
{
    oid column = variable.name_length > columnAt ? variable.name[columnAt] : firstColumn;
    oid row = numberOf(variable) + 1;
    if (column < firstColumn) {
        column = firstColumn;
        row = 1;
    } else if (row > rows) {
        ++column;
        row = 1;
    }
    if (column > lastColumn) {
        return false;
    }
    answer(variable, column, row);
    return true;
}

int handle(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *info,
           netsnmp_request_info *requests)
{
    bool any = true;
    for (u_char unanswered = ASN_NULL; any; unanswered = ASN_PRIV_RETRY) {
        any = false;
        for (netsnmp_request_info *each = requests; each != nullptr; each = each->next) {
            if (each->processed != 0 || each->requestvb->type != unanswered) {
                continue;
            }
            if (info->mode == MODE_GET) {
                answer(*each->requestvb, firstColumn, numberOf(*each->requestvb));
            } else if (next(*each->requestvb)) {
                any = true;
            } else {
                each->requestvb->type = ASN_NULL;
            }
        }
        if (info->mode != MODE_GETBULK || !any) {
            break;
        }
        netsnmp_bulk_to_next_fix_requests(requests);
    }
    return SNMP_ERR_NOERROR;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: bench_floor_agent CONFIGURATION ADDRESS ROWS\n");
        return 2;
    }
    rows = std::strtoul(argv[3], nullptr, 10);
    try {
        agent::EventLoop loop;
        agent::SnmpLibrary library({false, argv[1], {argv[2]}});
        library.readConfiguration();
        const agent::Listeners listeners(agent::SnmpLibrary::listeningAddresses());
        netsnmp_handler_registration *registration = netsnmp_create_handler_registration(
            "ipNetToPhysicalEntry", handle, entry, std::size(entry), HANDLER_CAN_RONLY | HANDLER_CAN_GETBULK);
        if (registration == nullptr || netsnmp_register_handler(registration) != MIB_REGISTERED_OK) {
            throw std::runtime_error("the table cannot be registered");
        }
        loop.run([] {});
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_floor_agent: %s\n", error.what());
        return 1;
    }
}
