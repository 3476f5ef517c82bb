// SPDX-License-Identifier: BSD-3-Clause
// Interfaces: which are selected, in which order, and which exist.
#include "chapters.h"
#include "listing.h"
#include "rows.h"

#include <algorithm>

namespace ipmib::portcheck
{

namespace
{

// The module's own list of types.
constexpr std::uint32_t standardTypes[] = {22, 35, 42, 10, 6,   23,  67,  31,  16,  39,  5,   71,
                                           27, 29, 1,  89, 26,  28,  41,  25,  7,   55,  2,   47,
                                           51, 70, 97, 86, 105, 110, 111, 122, 124, 144, 168, 176};

// One selection with an iteration over it, as long as the object lives.
class Iteration
{
  public:
    // `storage`: what the 512 bytes hold before.
    Iteration(Probe &probe, Selection selection, const IfSelection &storage = {}) : probe_(probe), selection_(storage)
    {
        const Services &services = probe.services();
        guarded("IF_Select_Init", [&](IfSelection *filled) { services.IF_Select_Init(5, filled); });
        if (selection == Selection::withNeighbours) {
            guarded("IF_SelectTypeSetGroup", [&](IfSelection *filled) { services.IF_SelectTypeSetGroup(2, filled); });
        } else {
            for (const std::uint32_t type : standardTypes) {
                guarded("IF_SelectType_Set", [&](IfSelection *filled) { services.IF_SelectType_Set(type, filled); });
            }
        }
        guarded("IF_SelectCondition_Set", [&](IfSelection *filled) { services.IF_SelectCondition_Set(8, filled); });
        probe.doing("IF_IteratorInitialize");
        iterator_ = services.IF_IteratorInitialize();
        if (iterator_ == 0) {
            probe.broken(Promise::iteratorOpens, "IF_IteratorInitialize", "it answers 0");
        }
    }
    ~Iteration()
    {
        probe_.doing("IF_IteratorFinalize");
        probe_.services().IF_IteratorFinalize(&iterator_);
    }
    Iteration(const Iteration &) = delete;
    Iteration &operator=(const Iteration &) = delete;

    const IfSelection &storage() const { return selection_; }
    std::uint32_t first() { return probe_.services().IF_GetFirstIfIndexByIfSelect(&selection_, iterator_); }
    std::uint32_t next(std::uint32_t ifIndex)
    {
        return probe_.services().IF_GetNextIfIndexByIfSelect(&selection_, iterator_, ifIndex);
    }

  private:
    // The selection's own calls are not examined.
    template <typename Call>
    void guarded(const char *service, Call call)
    {
        probe_.fill(service, selection_, [&](IfSelection *filled) {
            call(filled);
            return 0;
        });
    }

    Probe &probe_;
    IfSelection selection_;
    std::uintptr_t iterator_ = 0;
};

const char *nameOf(Selection selection)
{
    return selection == Selection::standard ? "the standard selection" : "the interfaces with neighbours";
}

FoundRow rowOf(std::uint32_t ifIndex)
{
    Key key;
    key.number = ifIndex;
    return ifIndex != 0 ? FoundRow(ListedRow::of(key, ifIndex)) : FoundRow();
}

Listing listingOf(Iteration &iteration, Selection selection)
{
    Listing listing;
    listing.what = nameOf(selection);
    listing.firstCall = "IF_GetFirstIfIndexByIfSelect";
    listing.nextCall = "IF_GetNextIfIndexByIfSelect";
    listing.ascend = listing.move = Promise::interfacesAscend;
    listing.begin = Promise::interfacesBegin;
    listing.follow = Promise::interfacesFollow;
    listing.first = [&iteration] { return rowOf(iteration.first()); };
    listing.next = [&iteration](const Key &key) { return rowOf(iteration.next(key.number)); };
    listing.text = [](const Key &key) { return "ifIndex " + std::to_string(key.number); };
    listing.items = [](const ListedRow &row) {
        return Items{{"if_index", std::to_string(row.key.number), row.key.number, sizeof row.key.number}};
    };
    listing.look = [](const ListedRow &) {};
    return listing;
}

std::vector<std::uint32_t> ifIndexesOf(const std::vector<ListedRow> &rows)
{
    std::vector<std::uint32_t> interfaces;
    for (const ListedRow &row : rows) {
        interfaces.push_back(row.key.number);
    }
    return interfaces;
}

// An ifIndex of a few bits shifted to the wrong end of the word.
bool looksSwapped(std::uint32_t ifIndex)
{
    return ifIndex >= 0x01000000 && swapped(ifIndex) < 0x10000;
}

// Interfaces that are not selected may exist, but not everywhere between two that are far apart.
void checkGaps(Probe &probe, const std::vector<std::uint32_t> &interfaces)
{
    constexpr std::uint32_t wide = 1000;
    std::uint32_t before = 0;
    for (const std::uint32_t ifIndex : interfaces) {
        const std::uint32_t gap = ifIndex > before ? ifIndex - before : 0;
        const std::uint32_t middle = before + gap / 2;
        if (gap > wide && probe.isValid(middle) && probe.isValid(middle - gap / 4) && probe.isValid(middle + gap / 4)) {
            probe.broken(Promise::othersDoNotExist, "IF_IsValidIfIndex",
                         "it says that ifIndex " + std::to_string(middle) + " exists, and others between " +
                             std::to_string(before) + " and " + std::to_string(ifIndex) + ", wherever it is asked");
            return;
        }
        before = ifIndex;
    }
}

void checkExistence(Probe &probe, const std::vector<std::uint32_t> &interfaces)
{
    for (const std::uint32_t ifIndex : interfaces) {
        if (!probe.isValid(ifIndex)) {
            probe.broken(Promise::interfacesExist, "IF_IsValidIfIndex",
                         "it denies the selected ifIndex " + std::to_string(ifIndex));
        }
        if (looksSwapped(ifIndex)) {
            probe.broken(Promise::ifIndexInMachineOrder, "IF_GetNextIfIndexByIfSelect",
                         "ifIndex " + std::to_string(ifIndex) + " is " + std::to_string(swapped(ifIndex)) +
                             ", the right one in the wrong byte order");
        }
    }
    checkGaps(probe, interfaces);
    const std::uint32_t beyond = interfaces.empty() ? 1 : interfaces.back() + 1;
    for (const std::uint32_t absent : {0u, std::max(beyond, 0x7FFFFFF0u)}) {
        if (probe.isValid(absent)) {
            probe.broken(Promise::othersDoNotExist, "IF_IsValidIfIndex",
                         "it says that ifIndex " + std::to_string(absent) + " exists");
        }
    }
}

bool isSame(Probe &probe, Iteration &iteration, Selection selection, const std::vector<std::uint32_t> &interfaces)
{
    const std::size_t before = probe.brokenCount();
    const bool same = ifIndexesOf(rowsOf(listingOf(iteration, selection), probe)) == interfaces;
    probe.forgetSince(before);
    return same;
}

// What is selected lies in the caller's storage: another selection that is made meanwhile changes nothing.
void checkTwoAtOnce(Probe &probe, Selection selection, const std::vector<std::uint32_t> &interfaces)
{
    Iteration iteration(probe, selection);
    Iteration other(probe, selection == Selection::standard ? Selection::withNeighbours : Selection::standard);
    if (!isSame(probe, iteration, selection, interfaces)) {
        probe.broken(Promise::interfacesStay, "IF_GetNextIfIndexByIfSelect",
                     std::string(nameOf(selection)) + " differs when another selection is made beside it");
    }
    Iteration again(probe, selection, other.storage());
    if (!isSame(probe, again, selection, interfaces)) {
        probe.broken(Promise::interfacesStay, "IF_Select_Init",
                     std::string(nameOf(selection)) +
                         " differs when it is made in storage that another selection was in: that is not cleared");
    }
}

} // namespace

std::vector<std::uint32_t> interfacesOf(Probe &probe, Selection selection)
{
    Iteration iteration(probe, selection);
    return ifIndexesOf(rowsOf(listingOf(iteration, selection), probe));
}

void checkInterfaces(Probe &probe, host::Resolver &)
{
    for (const Selection selection : {Selection::standard, Selection::withNeighbours}) {
        Iteration iteration(probe, selection);
        const auto interfaces = ifIndexesOf(checkedRowsOf(listingOf(iteration, selection), probe));
        checkExistence(probe, interfaces);
        if (interfacesOf(probe, selection) != interfaces) {
            probe.broken(Promise::interfacesStay, "IF_GetNextIfIndexByIfSelect",
                         std::string(nameOf(selection)) + " differs when it is asked for again");
        }
        checkTwoAtOnce(probe, selection, interfaces);
        probe.fact(std::string(nameOf(selection)) + ": " + std::to_string(interfaces.size()) + " interfaces");
    }
}

} // namespace ipmib::portcheck
