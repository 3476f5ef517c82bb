// SPDX-License-Identifier: BSD-3-Clause
// A table with one row for each interface. The library repeats GETBULK's questions itself.

#include "interfaces/interface_table.h"

#include "packet.h"

#include <algorithm>
#include <stdexcept>

namespace ipmib::agent
{

namespace
{

// What a sub-identifier is compared with; the library's may be wider than an ifIndex.
constexpr oid widest = UINT32_MAX;

} // namespace

InterfaceTable::InterfaceTable(const IpmibPlatformHooks &platform, const char *name, host::OidView root,
                               std::span<const InterfaceColumn> columns)
    : platform_(platform), interfaces_(*platform.interfaces), root_(root), columns_(columns)
{
    LibraryOid place(root);
    registration_ = netsnmp_create_handler_registration(name, handle, place.data(), place.size(), HANDLER_CAN_RONLY);
    if (registration_ == nullptr) {
        throw std::runtime_error("out of memory");
    }
    registration_->handler->myvoid = this;
    if (netsnmp_register_handler(registration_) != MIB_REGISTERED_OK) {
        throw std::runtime_error(std::string("cannot register ") + name); // the library has freed the registration
    }
}

InterfaceTable::~InterfaceTable()
{
    netsnmp_unregister_handler(registration_);
}

int InterfaceTable::handle(netsnmp_mib_handler *handler, netsnmp_handler_registration *,
                           netsnmp_agent_request_info *info, netsnmp_request_info *requests)
{
    const auto &table = *static_cast<const InterfaceTable *>(handler->myvoid);
    beginPacketOnce(&table.platform_, info);
    for (netsnmp_request_info *request = requests; request != nullptr; request = request->next) {
        if (request->processed != 0) {
            continue;
        }
        if (info->mode == MODE_GET) {
            table.get(*request);
        } else {
            table.getNext(*request);
        }
    }
    return SNMP_ERR_NOERROR;
}

std::span<const oid> InterfaceTable::withinTable(const netsnmp_variable_list &variable) const
{
    const std::span<const oid> name(variable.name, variable.name_length);
    const bool within = name.size() >= root_.size() && std::equal(root_.begin(), root_.end(), name.begin());
    return within ? name.subspan(root_.size()) : std::span<const oid>();
}

void InterfaceTable::get(netsnmp_request_info &request) const
{
    const std::span<const oid> asked = withinTable(*request.requestvb);
    const auto column = std::ranges::find_if(
        columns_, [&](const InterfaceColumn &one) { return !asked.empty() && one.number == asked[0]; });
    if (column == columns_.end()) {
        netsnmp_request_set_error(&request, SNMP_NOSUCHOBJECT);
        return;
    }
    InterfaceRow row{};
    if (asked.size() != 2 || asked[1] > widest ||
        interfaces_.find(static_cast<host::SubId>(asked[1]), &row.interface) != 0) {
        netsnmp_request_set_error(&request, SNMP_NOSUCHINSTANCE);
        return;
    }
    answer(*column, row, request);
}

// The row behind the one asked for in its column, else the first one of a later column. Without an answer the library
// asks the registration that follows.
void InterfaceTable::getNext(netsnmp_request_info &request) const
{
    const std::span<const oid> asked = withinTable(*request.requestvb);
    for (const InterfaceColumn &column : columns_) {
        const bool begun = asked.size() > 1 && column.number == asked[0];
        if (!asked.empty() && column.number < asked[0]) {
            continue;
        }
        const host::SubId behind = begun ? static_cast<host::SubId>(std::min(asked[1], widest)) : 0;
        InterfaceRow row{};
        if (interfaces_.next(behind, &row.interface) == 0) {
            host::Oid name(root_);
            name.append(column.number);
            name.append(row.interface.if_index);
            setName(*request.requestvb, name.view());
            answer(column, row, request);
            return;
        }
    }
}

void InterfaceTable::answer(const InterfaceColumn &column, InterfaceRow &row, netsnmp_request_info &request) const
{
    if (column.needsTraffic && interfaces_.traffic(row.interface.if_index, &row.traffic) != 0) {
        netsnmp_request_set_error(&request, SNMP_NOSUCHINSTANCE); // it vanished meanwhile
        return;
    }
    setValue(*request.requestvb, column.value(row));
}

} // namespace ipmib::agent
