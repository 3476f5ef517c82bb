// SPDX-License-Identifier: BSD-3-Clause
// Copies identifiers and values into the variables of a packet.

#include "varbind.h"

#include <algorithm>

namespace ipmib::agent
{

void assignOid(host::Oid &target, std::span<const oid> source)
{
    target.clear();
    const auto place = target.extend(std::min(source.size(), host::maxOidLength));
    std::transform(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(place.size()), place.begin(),
                   [](oid id) { return static_cast<host::SubId>(id); });
}

LibraryOid::LibraryOid(host::OidView source) : size_(std::min(source.size(), host::maxOidLength))
{
    std::copy_n(source.begin(), size_, ids_);
}

void setName(netsnmp_variable_list &variable, host::OidView name)
{
    const LibraryOid converted(name);
    snmp_set_var_objid(&variable, converted.data(), converted.size());
}

void setValue(netsnmp_variable_list &variable, const host::Value &value)
{
    using host::ValueType;
    const auto setNumber = [&](u_char type) {
        snmp_set_var_typed_integer(&variable, type, static_cast<long>(static_cast<std::uint32_t>(value.number)));
    };
    switch (value.type) {
    case ValueType::integer32:
        snmp_set_var_typed_integer(&variable, ASN_INTEGER, static_cast<std::int32_t>(value.number));
        break;
    case ValueType::unsigned32:
        setNumber(ASN_UNSIGNED);
        break;
    case ValueType::counter32:
        setNumber(ASN_COUNTER);
        break;
    case ValueType::timeTicks:
        setNumber(ASN_TIMETICKS);
        break;
    case ValueType::counter64: {
        const counter64 halves{static_cast<u_long>(value.number >> 32),
                               static_cast<u_long>(value.number & 0xFFFFFFFFu)};
        snmp_set_var_typed_value(&variable, ASN_COUNTER64, &halves, sizeof halves);
        break;
    }
    case ValueType::octets:
        snmp_set_var_typed_value(&variable, ASN_OCTET_STR, value.octets.data(), value.octets.size());
        break;
    case ValueType::opaque:
        snmp_set_var_typed_value(&variable, ASN_OPAQUE, value.octets.data(), value.octets.size());
        break;
    case ValueType::ipAddress:
        snmp_set_var_typed_value(&variable, ASN_IPADDRESS, value.octets.data(), value.octets.size());
        break;
    case ValueType::objectId: {
        const LibraryOid converted(value.objectId);
        snmp_set_var_typed_value(&variable, ASN_OBJECT_ID, converted.data(), converted.size() * sizeof(oid));
        break;
    }
    }
}

} // namespace ipmib::agent
