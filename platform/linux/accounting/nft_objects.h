// SPDX-License-Identifier: BSD-3-Clause
// Owners of the objects of libnftnl.
#pragma once

#include <libnftnl/chain.h>
#include <libnftnl/rule.h>
#include <libnftnl/set.h>
#include <libnftnl/table.h>
#include <libnftnl/udata.h>

#include <memory>
#include <new>

namespace ipmib::platform
{

template <auto Free>
struct Freer {
    template <class T>
    void operator()(T *object) const
    {
        Free(object);
    }
};
using TableObject = std::unique_ptr<nftnl_table, Freer<nftnl_table_free>>;
using SetObject = std::unique_ptr<nftnl_set, Freer<nftnl_set_free>>;
using ChainObject = std::unique_ptr<nftnl_chain, Freer<nftnl_chain_free>>;
using RuleObject = std::unique_ptr<nftnl_rule, Freer<nftnl_rule_free>>;
using UdataObject = std::unique_ptr<nftnl_udata_buf, Freer<nftnl_udata_buf_free>>;

template <class T>
inline T *allocated(T *object)
{
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    return object;
}

} // namespace ipmib::platform
