// SPDX-License-Identifier: BSD-3-Clause
// A read-only table of an agent's own, served in the agent library, whose answers come from a platform's hooks.

#include "registered_table.h"

#include "packet.h"
#include "varbind.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace ipmib::agent
{

RegisteredTable::RegisteredTable(const IpmibPlatformHooks &platform, const char *name, host::OidView root)
    : platform_(platform), root_(root)
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

RegisteredTable::~RegisteredTable()
{
    netsnmp_unregister_handler(registration_);
}

int RegisteredTable::handle(netsnmp_mib_handler *handler, netsnmp_handler_registration *,
                            netsnmp_agent_request_info *info, netsnmp_request_info *requests)
{
    const auto &table = *static_cast<const RegisteredTable *>(handler->myvoid);
    beginPacketOnce(&table.platform_, info);
    for (netsnmp_request_info *request = requests; request != nullptr; request = request->next) {
        if (request->processed != 0) {
            continue;
        }
        const std::span<const oid> asked = table.behindRoot(*request->requestvb);
        if (info->mode == MODE_GET) {
            table.get(asked, *request);
        } else {
            table.getNext(asked, *request);
        }
    }
    return SNMP_ERR_NOERROR;
}

std::span<const oid> RegisteredTable::behindRoot(const netsnmp_variable_list &variable) const
{
    const std::span<const oid> name(variable.name, variable.name_length);
    const bool within = name.size() >= root_.size() && std::equal(root_.begin(), root_.end(), name.begin());
    return within ? name.subspan(root_.size()) : std::span<const oid>();
}

} // namespace ipmib::agent
