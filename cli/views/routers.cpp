// SPDX-License-Identifier: BSD-3-Clause
// The default routers.
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
    {"ROUTER", "address"},
    {"INTERFACE", "interface"},
    {"PREFERENCE", "preference"},
    {"LIFETIME", "lifetime", Align::right},
};

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { lifetime, preference };
    TableReader rows(session, "ipDefaultRouterEntry", {"ipDefaultRouterLifetime", "ipDefaultRouterPreference"});
    while (rows.next()) {
        sink({addressCell(rows, 1), interfaceCell(rows, 2), labelCell(rows, preference), lifetimeCell(rows, lifetime)});
    }
}

} // namespace

const View routersView{"routers", columns, list};

} // namespace ipmib::cli
