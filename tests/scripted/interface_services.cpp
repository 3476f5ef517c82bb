// SPDX-License-Identifier: BSD-3-Clause
// Scripted services: service checks, interface selection and iteration.
#include "state.h"

using namespace ipmib::scripted;

namespace
{

// A prepared selection begins with this mark; nothing else of it matters here.
constexpr std::uint64_t selectionMark = 0x5E1EC7ED0000ABCDu;

std::uint32_t nextResult(std::deque<std::uint32_t> &results)
{
    const std::uint32_t result = results.front();
    if (results.size() > 1) {
        results.pop_front();
    }
    return result;
}

void expectPrepared(const char *service, const IfSelection *selection)
{
    if (selection->alignment != selectionMark) {
        complain(std::string(service) + ": the selection was not begun");
    }
}

void expectOpen(const char *service, std::uintptr_t iterator)
{
    if (state().openIterators.count(iterator) == 0) {
        complain(std::string(service) + ": the iterator is not open");
    }
}

std::uint32_t interfaceAfter(std::uint32_t ifIndex)
{
    if (world().nextInterface) {
        return world().nextInterface(ifIndex);
    }
    const auto next = world().interfaces.upper_bound(ifIndex);
    return next == world().interfaces.end() ? 0 : *next;
}

} // namespace

uint32_t IP6_DaemonCheck(uint32_t one)
{
    note([&] { return "IP6_DaemonCheck(" + number(one) + ")"; });
    return nextResult(world().ipv6Service);
}

uint32_t IP_DaemonCheck(uint32_t one)
{
    note([&] { return "IP_DaemonCheck(" + number(one) + ")"; });
    return nextResult(world().ipv4Service);
}

uint32_t IF_Select_Init(uint32_t kind, IfSelection *selection)
{
    note([&] { return "IF_Select_Init(" + number(kind) + ")"; });
    scribble(selection); // the whole record is the platform's
    selection->alignment = selectionMark;
    return notExamined;
}

uint32_t IF_SelectType_Set(uint32_t type, IfSelection *selection)
{
    note([&] { return "IF_SelectType_Set(" + number(type) + ")"; });
    expectPrepared("IF_SelectType_Set", selection);
    return notExamined;
}

uint32_t IF_SelectTypeSetGroup(uint32_t group, IfSelection *selection)
{
    note([&] { return "IF_SelectTypeSetGroup(" + number(group) + ")"; });
    expectPrepared("IF_SelectTypeSetGroup", selection);
    return notExamined;
}

uint32_t IF_SelectCondition_Set(uint32_t condition, IfSelection *selection)
{
    note([&] { return "IF_SelectCondition_Set(" + number(condition) + ")"; });
    expectPrepared("IF_SelectCondition_Set", selection);
    return notExamined;
}

uintptr_t IF_IteratorInitialize(void)
{
    note([] { return "IF_IteratorInitialize()"; });
    const std::uintptr_t iterator = world().outOfIterators ? 0 : 0x17E0 + ++state().lastIterator;
    state().openIterators.insert(iterator);
    return iterator;
}

uint32_t IF_IteratorFinalize(uintptr_t *iterator)
{
    note([] { return "IF_IteratorFinalize()"; });
    expectOpen("IF_IteratorFinalize", *iterator);
    state().openIterators.erase(*iterator);
    return notExamined;
}

uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator)
{
    note([] { return "IF_GetFirstIfIndexByIfSelect()"; });
    expectPrepared("IF_GetFirstIfIndexByIfSelect", selection);
    expectOpen("IF_GetFirstIfIndexByIfSelect", iterator);
    return interfaceAfter(0);
}

uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator, uint32_t if_index)
{
    note([&] { return "IF_GetNextIfIndexByIfSelect(" + number(if_index) + ")"; });
    expectPrepared("IF_GetNextIfIndexByIfSelect", selection);
    expectOpen("IF_GetNextIfIndexByIfSelect", iterator);
    return interfaceAfter(if_index);
}

uint32_t IF_IsValidIfIndex(uint32_t if_index)
{
    note([&] { return "IF_IsValidIfIndex(" + number(if_index) + ")"; });
    const std::uint32_t *const scripted = find(world().validity, if_index);
    return scripted != nullptr ? *scripted : static_cast<std::uint32_t>(world().interfaces.count(if_index));
}
