// SPDX-License-Identifier: BSD-3-Clause
// The standard interface selection, and the walk over it that every interface table makes.
#include "stats/interface_walk.h"

namespace ipmib
{

namespace
{

// The platform's type codes of all interfaces that can carry IP.
constexpr std::uint32_t g_aulIfSelectType[] = {22, 35, 42, 10, 6,   23,  67,  31,  16,  39,  5,   71,
                                               27, 29, 1,  89, 26,  28,  41,  25,  7,   55,  2,   47,
                                               51, 70, 97, 86, 105, 110, 111, 122, 124, 144, 168, 176};
static_assert(sizeof g_aulIfSelectType / sizeof *g_aulIfSelectType == 36);

constexpr std::uint32_t selectionKind = 5;
constexpr std::uint32_t existingInterfaces = 8;

} // namespace

void ip_IfSelect_Prepare(IfSelection *selection)
{
    IF_Select_Init(selectionKind, selection);
    for (const std::uint32_t type : g_aulIfSelectType) {
        IF_SelectType_Set(type, selection);
    }
    IF_SelectCondition_Set(existingInterfaces, selection);
}

} // namespace ipmib
