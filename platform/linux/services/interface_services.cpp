// SPDX-License-Identifier: BSD-3-Clause
// Interfaces: which exist, which are selected, in ascending ifIndex.
#include "core/type_selection.h"
#include "services/service.h"

using namespace ipmib::platform;

namespace
{

// An iteration needs no state: each step is a lookup by ifIndex. The handle only has to differ from "none".
constexpr uintptr_t iteratorHandle = 1;

uint32_t result(bool understood)
{
    return understood ? success : notFound;
}

} // namespace

uint32_t IF_Select_Init(uint32_t kind, IfSelection *selection)
{
    return result(TypeSelection::in(*selection).begin(kind));
}

uint32_t IF_SelectType_Set(uint32_t type, IfSelection *selection)
{
    return result(TypeSelection::in(*selection).addType(type));
}

uint32_t IF_SelectTypeSetGroup(uint32_t group, IfSelection *selection)
{
    return result(TypeSelection::in(*selection).addGroup(group));
}

uint32_t IF_SelectCondition_Set(uint32_t condition, IfSelection *selection)
{
    return result(TypeSelection::in(*selection).addCondition(condition));
}

uintptr_t IF_IteratorInitialize(void)
{
    return running() != nullptr ? iteratorHandle : 0;
}

uint32_t IF_IteratorFinalize(uintptr_t *iterator)
{
    *iterator = 0;
    return success;
}

uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator)
{
    return IF_GetNextIfIndexByIfSelect(selection, iterator, 0);
}

uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, uintptr_t, uint32_t if_index)
{
    const LinuxPlatform *platform = running();
    const InterfaceList::Row *next =
        platform == nullptr ? nullptr : platform->links().list().next(TypeSelection::in(*selection), if_index);
    return next == nullptr ? 0 : next->ifIndex;
}

uint32_t IF_IsValidIfIndex(uint32_t if_index)
{
    const LinuxPlatform *platform = running();
    return platform != nullptr && platform->links().find(if_index) != nullptr ? 1 : 0;
}
