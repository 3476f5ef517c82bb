// SPDX-License-Identifier: BSD-3-Clause
// The built library in a process that provides the platform, as an agent does: what loading and unloading it do.
#include <scripted/call_log.h>
#include <scripted/request.h>
#include <scripted/world.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

using namespace ipmib::scripted;

namespace
{

class Library : public testing::Test
{
  protected:
    void SetUp() override { newWorld(); }
    void TearDown() override { EXPECT_EQ(complaints(), std::vector<std::string>{}); }

    void load()
    {
        handle_ = dlopen(IPMIB_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle_, nullptr) << dlerror();
    }
    void unload() { ASSERT_EQ(dlclose(handle_), 0) << dlerror(); }
    template <typename Symbol>
    Symbol symbol(const char *name)
    {
        return reinterpret_cast<Symbol>(dlsym(handle_, name));
    }

  private:
    void *handle_ = nullptr;
};

const Calls loading = {"SNMP_RegisterMibTree(IP-MIB, 0, 1, iso)", "MOR_RegCallBack(0x3720000)"};
const Calls unloading = {"SNMP_DeregMibTree(IP-MIB, 0, 1, iso)", "MOR_DeregCallBack(0x3720000)"};

TEST_F(Library, LoadingRegistersTheTreeThenTheCallback)
{
    MorCallback bound = nullptr;
    world().onRegisterCallback = [&bound](MorCallback callback) { bound = callback; };
    load();
    EXPECT_EQ(allCalls(), loading);
    EXPECT_EQ(bound, symbol<MorCallback>("IP_ConfigCallBack"));
    EXPECT_EQ(world().registeredRoot, symbol<const MibTreeNode *>("ip_tree_node_iso"));
    unload();
}

TEST_F(Library, UnloadingDeregistersInTheSameOrder)
{
    load();
    forgetCalls();
    unload();
    EXPECT_EQ(allCalls(), unloading);
}

TEST_F(Library, AFailedRegistrationStopsNothing)
{
    world().registerTree = world().registerCallback = 1;
    world().deregisterTree = world().deregisterCallback = 1;
    load();
    EXPECT_EQ(allCalls(), loading);
    forgetCalls();
    unload();
    EXPECT_EQ(allCalls(), unloading);
}

TEST_F(Library, RequestsAreAnsweredFromTheMomentTheCallbackIsBound)
{
    unsigned answers = 0;
    world().onRegisterCallback = [&answers](MorCallback callback) {
        EXPECT_EQ(get(11).index(1, 2).index(2, 135).sendTo(callback), answered());
        ++answers;
    };
    load();
    EXPECT_EQ(answers, 1u);
    unload();
}

TEST_F(Library, CanBeLoadedAgain)
{
    for (int round = 0; round < 3; ++round) {
        forgetCalls();
        load();
        EXPECT_EQ(allCalls(), loading);
        unload();
    }
}

} // namespace
