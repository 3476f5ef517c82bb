// SPDX-License-Identifier: BSD-3-Clause
// The standard interface selection, and the walk over it that every interface table makes.
#pragma once

#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <cstdint>

namespace ipmib
{

// Fills a selection with the interfaces of all types that can carry IP.
void ip_IfSelect_Prepare(IfSelection *selection);

// One walk over the standard selection: prepared and opened at its beginning, finalised at its end.
class InterfaceWalk
{
  public:
    InterfaceWalk()
    {
        ip_IfSelect_Prepare(&selection_);
        iterator_ = IF_IteratorInitialize();
    }
    ~InterfaceWalk() { IF_IteratorFinalize(&iterator_); }
    InterfaceWalk(const InterfaceWalk &) = delete;
    InterfaceWalk &operator=(const InterfaceWalk &) = delete;

    // The ifIndex of the first interface, and of the one that follows a given ifIndex; 0 when there is none.
    std::uint32_t first() { return IF_GetFirstIfIndexByIfSelect(&selection_, iterator_); }
    std::uint32_t next(std::uint32_t ifIndex) { return IF_GetNextIfIndexByIfSelect(&selection_, iterator_, ifIndex); }

  private:
    IfSelection selection_{};
    std::uintptr_t iterator_ = 0;
};

// Whether a walk from the beginning visits the interface.
inline bool isWalked(std::uint32_t ifIndex)
{
    return ifIndex != 0 && InterfaceWalk().next(ifIndex - 1) == ifIndex;
}

// The row of the first interface after ifIndex (of the first of all for 0) that has one. The end of the walk is
// RC_NOT_FOUND, as a failed lookup is.
template <class Row>
std::uint32_t nextInterfaceRow(std::uint32_t ifIndex, std::uint32_t (*getByIndex)(std::uint32_t, Row *), Row *row)
{
    InterfaceWalk walk;
    std::uint32_t candidate = ifIndex != 0 ? walk.next(ifIndex) : walk.first();
    std::uint32_t result = RC_NOT_FOUND;
    while (candidate != 0 && (result = getByIndex(candidate, row)) != 0) {
        candidate = walk.next(candidate);
    }
    return result;
}

} // namespace ipmib
