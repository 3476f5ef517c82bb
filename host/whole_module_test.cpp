// SPDX-License-Identifier: BSD-3-Clause
// The module itself behind the resolver, over random devices: what a walk finds behind any identifier is what the
// device's sorted list of rows says.
#include "registry.h"
#include "resolver.h"

#include "testing/device.h"
#include "testing/packets.h"

#include <scripted/call_log.h>
#include <scripted/world.h>

#include <gtest/gtest.h>

namespace ipmib::host::testing
{
namespace
{

class WholeModule : public ::testing::Test
{
  protected:
    static const MibTreeNode &root() { return *Registry::ofProcess().trees().front().root; }
    static MorCallback callback() { return Registry::ofProcess().callbacks().front().callback; }
};

TEST_F(WholeModule, isRegisteredByItsHooks)
{
    ASSERT_EQ(Registry::ofProcess().trees().size(), 1u);
    EXPECT_EQ(Registry::ofProcess().trees().front().module, "IP-MIB");
    EXPECT_EQ(Registry::ofProcess().callbacks().front().module, MOR_MODULE_IP);
}

TEST_F(WholeModule, isServedInTwelveRegions)
{
    Resolver resolver(root(), callback(), nullptr);
    ASSERT_EQ(resolver.regions().size(), 12u); // two scalars and ten tables
    EXPECT_EQ(text(resolver.regions().front().root.view()), "1.3.6.1.2.1.4.25");
    EXPECT_EQ(text(resolver.regions().back().root.view()), "1.3.6.1.2.1.5.30.1");
}

TEST_F(WholeModule, agreesWithTheRowsOfTheDevice)
{
    Resolver resolver(root(), callback(), [](int, const char *line) { ADD_FAILURE() << line; });
    const Columns columns = servedColumns(root());
    // What a row holds is the module's affair; here it counts that a get of the same name finds the same value.
    const ExpectValue anyValue = [](OidView, const Value &) {};

    Random random(26);
    for (int world = 0; world < 12 && !HasFailure(); ++world) {
        makeRandomDevice(random);
        const Instances instances = instancesOfDevice(columns);
        checkWalk(resolver, instances, Identifier{1}, anyValue);
        for (int packet = 0; packet < 150 && !HasFailure(); ++packet) {
            SCOPED_TRACE("device " + std::to_string(world) + ", packet " + std::to_string(packet));
            checkGetNext(resolver, instances, random, anyValue);
            checkGet(resolver, instances, random, anyValue, isLenient);
            scripted::forgetCalls();
        }
    }
    EXPECT_EQ(scripted::complaints(), std::vector<std::string>{});
    EXPECT_EQ(scripted::openIterators(), 0u);
}

TEST_F(WholeModule, answersAWholeRowInOneRequest)
{
    Random random(1);
    do {
        makeRandomDevice(random);
    } while (scripted::world().interfaces.size() < 3);
    Resolver resolver(root(), callback(), nullptr);
    const Identifier entry{1, 3, 6, 1, 2, 1, 4, 31, 3, 1};
    std::vector<Identifier> asked;
    for (const Identifier &column : servedColumns(root())) {
        if (isWithin(column, entry)) {
            asked.push_back(column);
        }
    }
    ASSERT_EQ(asked.size(), 30u);
    std::size_t rows = 0;
    for (;; ++rows) {
        std::vector<Variable> variables(asked.size());
        for (std::size_t i = 0; i < asked.size(); ++i) {
            variables[i].asked = asked[i];
        }
        const std::uint64_t before = resolver.requestCount();
        resolver.getNext(variables, entry);
        if (variables.front().name.view()[10] != asked.front()[10]) {
            break; // the first column has ended
        }
        EXPECT_EQ(resolver.requestCount() - before, 1u);
        for (std::size_t i = 0; i < asked.size(); ++i) {
            ASSERT_EQ(variables[i].status, Status::ok);
            asked[i].assign(variables[i].name.view().begin(), variables[i].name.view().end());
        }
    }
    EXPECT_EQ(rows, 2 * scripted::world().interfaces.size());
}

} // namespace
} // namespace ipmib::host::testing
