// SPDX-License-Identifier: BSD-3-Clause
// Between the identifiers and values of the host and those of the net-snmp library, whose sub-identifiers are longs.
#pragma once

#include "host/resolver.h"

#include "net_snmp.h"

#include <span>

namespace ipmib::agent
{

// Replaces the content; what is longer than an identifier may be is cut off.
void assignOid(host::Oid &target, std::span<const oid> source);

// An identifier in the library's form.
class LibraryOid
{
  public:
    explicit LibraryOid(host::OidView source);
    const oid *data() const { return ids_; }
    oid *data() { return ids_; }
    std::size_t size() const { return size_; }

  private:
    std::size_t size_;
    oid ids_[host::maxOidLength]; // only the first size_ are initialised
};

void setName(netsnmp_variable_list &variable, host::OidView name);
void setValue(netsnmp_variable_list &variable, const host::Value &value);

} // namespace ipmib::agent
