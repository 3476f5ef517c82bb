// SPDX-License-Identifier: BSD-3-Clause
// Interfaces: which exist, which are selected, in ascending ifIndex.
#include "core/type_selection.h"
#include "services/call.h"

using namespace ipmib::simulated;
using ipmib::platform::InterfaceList;
using ipmib::platform::TypeSelection;

namespace
{

// An iteration needs no state: each step is a lookup by ifIndex. The handle only has to differ from "none".
constexpr uintptr_t iteratorHandle = 1;

uint32_t result(bool understood)
{
    return understood ? success : notFound;
}

[[gnu::noinline]] const InterfaceList::Row *nextExisting(const Device &device, const TypeSelection &types,
                                                         const InterfaceList::Row *row)
{
    while (row != nullptr && device.find(row->ifIndex) == nullptr) {
        row = device.list().next(types, row->ifIndex);
    }
    return row;
}

inline uint32_t nextSelected(const Device &device, IfSelection *selection, uint32_t ifIndex)
{
    const TypeSelection &types = TypeSelection::in(*selection);
    const InterfaceList::Row *row = device.list().next(types, ifIndex);
    if (row != nullptr && !row->isSteady) [[unlikely]] {
        row = nextExisting(device, types, row);
    }
    return row == nullptr ? 0 : row->ifIndex;
}

} // namespace

uint32_t IF_Select_Init(uint32_t kind, IfSelection *selection)
{
    const Call call(Service::IF_Select_Init);
    return call ? result(TypeSelection::in(*selection).begin(kind)) : call.result();
}

uint32_t IF_SelectType_Set(uint32_t type, IfSelection *selection)
{
    const Call call(Service::IF_SelectType_Set);
    return call ? result(TypeSelection::in(*selection).addType(type)) : call.result();
}

uint32_t IF_SelectTypeSetGroup(uint32_t group, IfSelection *selection)
{
    const Call call(Service::IF_SelectTypeSetGroup);
    return call ? result(TypeSelection::in(*selection).addGroup(group)) : call.result();
}

uint32_t IF_SelectCondition_Set(uint32_t condition, IfSelection *selection)
{
    const Call call(Service::IF_SelectCondition_Set);
    return call ? result(TypeSelection::in(*selection).addCondition(condition)) : call.result();
}

uintptr_t IF_IteratorInitialize(void)
{
    const Call call(Service::IF_IteratorInitialize);
    return call ? iteratorHandle : call.result();
}

uint32_t IF_IteratorFinalize(uintptr_t *iterator)
{
    const Call call(Service::IF_IteratorFinalize);
    *iterator = 0;
    return call ? success : call.result();
}

uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t)
{
    const Call call(Service::IF_GetFirstIfIndexByIfSelect);
    return call ? nextSelected(call.device(), selection, 0) : call.result();
}

uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, uintptr_t, uint32_t if_index)
{
    const Call call(Service::IF_GetNextIfIndexByIfSelect, if_index);
    return call ? nextSelected(call.device(), selection, if_index) : call.result();
}

uint32_t IF_IsValidIfIndex(uint32_t if_index)
{
    const Call call(Service::IF_IsValidIfIndex, if_index);
    if (!call) {
        return call.result();
    }
    return call.device().find(if_index) != nullptr ? 1 : 0;
}
