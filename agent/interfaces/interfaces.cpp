// SPDX-License-Identifier: BSD-3-Clause
// The interface tables (IF-MIB) of an agent that has nobody beside it to serve them.

#include "interfaces/interfaces.h"

#include "interfaces/interface_rows.h"
#include "packet.h"
#include "row_table.h"

#include <net-snmp/agent/agent_sysORTable.h>

#include <stdexcept>

namespace ipmib::agent
{

namespace
{

constexpr host::SubId ifMib[] = {1, 3, 6, 1, 2, 1, 31};
constexpr host::SubId ifNumber[] = {1, 3, 6, 1, 2, 1, 2, 1};
constexpr host::SubId ifEntry[] = {1, 3, 6, 1, 2, 1, 2, 2, 1};
constexpr host::SubId ifXEntry[] = {1, 3, 6, 1, 2, 1, 31, 1, 1, 1};
constexpr host::SubId ifTableLastChange[] = {1, 3, 6, 1, 2, 1, 31, 1, 5};

// A scalar over the interfaces; the library sees to its identifier.
class Scalar
{
  public:
    using Value = host::Value (*)(const IpmibInterfaceHooks &);

    Scalar(const IpmibPlatformHooks &platform, const char *name, host::OidView place, Value value)
        : platform_(platform), value_(value)
    {
        LibraryOid root(place);
        registration_ = netsnmp_create_handler_registration(name, handle, root.data(), root.size(), HANDLER_CAN_RONLY);
        if (registration_ == nullptr) {
            throw std::runtime_error("out of memory");
        }
        registration_->handler->myvoid = this;
        if (netsnmp_register_read_only_scalar(registration_) != MIB_REGISTERED_OK) {
            throw std::runtime_error(std::string("cannot register ") + name); // and the library has freed it
        }
    }
    ~Scalar() { netsnmp_unregister_handler(registration_); }
    Scalar(const Scalar &) = delete;
    Scalar &operator=(const Scalar &) = delete;

  private:
    static int handle(netsnmp_mib_handler *handler, netsnmp_handler_registration *, netsnmp_agent_request_info *info,
                      netsnmp_request_info *requests)
    {
        const auto &scalar = *static_cast<const Scalar *>(handler->myvoid);
        beginPacketOnce(&scalar.platform_, info);
        setValue(*requests->requestvb, scalar.value_(*scalar.platform_.interfaces));
        return SNMP_ERR_NOERROR;
    }

    const IpmibPlatformHooks &platform_;
    Value value_;
    netsnmp_handler_registration *registration_;
};

// The line of sysORTable.
class Capability
{
  public:
    Capability() { register_sysORTable(place_.data(), place_.size(), "The MIB module to describe network interfaces"); }
    ~Capability() { unregister_sysORTable(place_.data(), place_.size()); }
    Capability(const Capability &) = delete;
    Capability &operator=(const Capability &) = delete;

  private:
    LibraryOid place_{ifMib};
};

host::Value count(const IpmibInterfaceHooks &interfaces)
{
    return {host::ValueType::integer32, interfaces.count(), {}, {}};
}

host::Value lastChange(const IpmibInterfaceHooks &interfaces)
{
    return uptimeAt(interfaces.rows_changed_ms());
}

} // namespace

class Interfaces::Served
{
  public:
    explicit Served(const IpmibPlatformHooks &platform)
        : number_(platform, "ifNumber", ifNumber, count),
          ifTable_(platform, "ifTable", ifEntry, InterfaceRows(*platform.interfaces, ifTableColumns)),
          ifXTable_(platform, "ifXTable", ifXEntry, InterfaceRows(*platform.interfaces, ifXTableColumns)),
          lastChange_(platform, "ifTableLastChange", ifTableLastChange, lastChange)
    {
    }

  private:
    Scalar number_;
    RowTable<InterfaceRows> ifTable_;
    RowTable<InterfaceRows> ifXTable_;
    Scalar lastChange_;
    Capability capability_;
};

Interfaces::Interfaces(const IpmibPlatformHooks *platform)
{
    if (platform != nullptr && platform->interfaces != nullptr) {
        served_ = std::make_unique<Served>(*platform);
    }
}

Interfaces::~Interfaces() = default;

} // namespace ipmib::agent
