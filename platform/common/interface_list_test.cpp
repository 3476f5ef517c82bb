// SPDX-License-Identifier: BSD-3-Clause
// Walks over a list of interfaces agree with a map, whatever comes, goes and changes between two steps.
#include "interface_list.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>

namespace
{

using ipmib::platform::InterfaceList;
using ipmib::platform::TypeSelection;

struct Interface {
    std::uint8_t type;
    std::optional<std::uint32_t> address;
    bool lasts;
};
using Model = std::map<std::uint32_t, Interface>;

class Changing
{
  public:
    explicit Changing(std::uint32_t seed) : random_(seed) {}

    void change()
    {
        const std::uint32_t ifIndex = pick(most);
        if (pick(3) == 0) {
            list.erase(ifIndex);
            model.erase(ifIndex);
        } else {
            const Interface interface {
                static_cast<std::uint8_t>(1 + pick(4)), address(), pick(4) != 0
            };
            list.put(ifIndex, interface.type);
            model[ifIndex] = interface;
        }
        ++version;
    }
    void changeAddress()
    {
        if (const auto found = model.find(pick(most)); found != model.end()) {
            found->second.address = address();
            version += found->second.lasts ? 1 : 0;
        }
    }
    std::uint32_t pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

    static constexpr std::uint32_t most = 300;
    InterfaceList list;
    Model model;
    std::uint64_t version = 1;
    unsigned asked = 0;

    void expectSameLinkLocal(std::uint32_t ifIndex)
    {
        const auto known = model.find(ifIndex);
        const std::optional<std::uint32_t> expected = known == model.end() ? std::nullopt : known->second.address;
        const auto ask = [&](FullAddressRecord *record) {
            ++asked;
            record->created_s = expected.value_or(0);
            record->if_index = ifIndex;
            record->state = expected.value_or(0) + 1;
            record->last_changed_s = expected.value_or(0) + 2;
            return InterfaceList::Answer{expected.has_value(), known == model.end() || known->second.lasts};
        };
        FullAddressRecord record{};
        ASSERT_EQ(list.linkLocal(ifIndex, version, ask, &record), expected.has_value());
        if (expected) {
            EXPECT_EQ(record.if_index, ifIndex);
            EXPECT_EQ(record.created_s, *expected);
            EXPECT_EQ(record.state, *expected + 1);
            EXPECT_EQ(record.last_changed_s, *expected + 2);
        }
    }

  private:
    std::optional<std::uint32_t> address() { return pick(4) == 0 ? std::nullopt : std::optional(pick(1'000)); }

    std::mt19937 random_;
};

// Types 1 and 3 of the four are selected.
std::uint32_t nextOf(const Model &model, std::uint32_t ifIndex)
{
    auto found = model.upper_bound(ifIndex);
    while (found != model.end() && found->second.type % 2 == 0) {
        ++found;
    }
    return found == model.end() ? 0 : found->first;
}

TEST(InterfaceList, walksAgreeWithAMapThatChangesBetweenTheirSteps)
{
    IfSelection storage{};
    TypeSelection &selection = TypeSelection::in(storage);
    selection.begin(5);
    selection.addType(1);
    selection.addType(3);
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        Changing some(seed);
        for (std::uint32_t i = 0; i < some.pick(Changing::most) * 2; ++i) {
            some.change();
        }
        for (int walk = 0; walk < 20; ++walk) {
            const std::uint32_t quiet = 1 + some.pick(50); // steps between two changes
            std::uint32_t at = 0;
            do {
                const auto *row = some.list.next(selection, at);
                at = nextOf(some.model, at);
                ASSERT_EQ(row == nullptr ? 0 : row->ifIndex, at);
                some.expectSameLinkLocal(at);
                some.expectSameLinkLocal(some.pick(4) == 0 ? some.pick(Changing::most) : at);
                if (some.pick(quiet) == 0) {
                    some.pick(2) == 0 ? some.change() : some.changeAddress();
                }
            } while (at != 0);
        }
    }
}

TEST(InterfaceList, anAddressIsAskedForOnceAVersion)
{
    Changing some(7);
    some.list.put(1, 6);
    some.model[1] = {6, 5, true};
    some.list.put(2, 6);
    some.model[2] = {6, std::nullopt, true};
    for (int i = 0; i < 3; ++i) {
        some.expectSameLinkLocal(1);
        some.expectSameLinkLocal(2);
    }
    EXPECT_EQ(some.asked, 2u);
    ++some.version;
    some.expectSameLinkLocal(1);
    EXPECT_EQ(some.asked, 3u);
    some.model[1].lasts = false;
    ++some.version;
    some.expectSameLinkLocal(1);
    some.expectSameLinkLocal(1);
    EXPECT_EQ(some.asked, 5u) << "what may change by itself is not kept";
}

} // namespace
