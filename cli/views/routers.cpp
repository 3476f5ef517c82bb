// SPDX-License-Identifier: BSD-3-Clause
// The default routers.
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
    {"ROUTER", "address", Align::left, 0, Role::key},
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"PREFERENCE", "preference"},
    {"LIFETIME", "lifetime", Align::right, 1, Role::time},
};

// The object can hold no more.
constexpr std::uint32_t endless = 65'535;

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { lifetime, preference };
    TableReader rows(session, "ipDefaultRouterEntry", {"ipDefaultRouterLifetime", "ipDefaultRouterPreference"});
    while (rows.next()) {
        sink({addressCell(rows, 1), interfaceCell(rows, 2), labelCell(rows, preference),
              lifetimeCell(rows, lifetime, endless)});
    }
}

} // namespace

const View routersView{"routers", columns, list};

} // namespace ipmib::cli
