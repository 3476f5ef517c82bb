// SPDX-License-Identifier: BSD-3-Clause
// Whoever hands tables over to ipmibd, or puts it in snmpd's place, keeps every instance of the groups of the IP stack,
// but for those of no_counterpart.json, which have another one that says the same.

#include "e2e/master_under_test.h"
#include "e2e/objects.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <regex>

namespace ipmib::e2e
{

namespace
{

// Something of everything. Where the kernel has no VLANs another interface takes the place.
const std::string bed = R"(
ip link add br0 type bridge; ip link set br0 up
ip link add link left name left.7 type vlan id 7 2>/dev/null || ip link add left.7 type bridge; ip link set left.7 up
ip link add p0 type veth peer name p1; ip link set p0 master br0 up; ip link set p1 up
ip link add idle type veth peer name idle1
ip addr add 192.0.2.2/24 broadcast 192.0.2.255 dev left
ip addr add 198.51.100.1/25 broadcast + dev left.7
ip addr add 10.1.1.1 peer 10.1.1.2/32 dev p1
ip addr add 203.0.113.1/28 broadcast + dev br0
ip addr add 192.0.2.129/26 dev idle
ip -6 addr add 2001:db8::3/64 dev left preferred_lft 0
ip -6 addr add 2001:db8:7::1/48 dev left.7
ip -6 addr add fd00::1 peer fd00::2/128 dev p1
ip -6 addr add 2001:db8:b::1/64 dev br0
for version in ipv4 ipv6; do # who is in delay is not probed, and so not given up, while all is walked
  echo 3600 > /proc/sys/net/$version/neigh/left/delay_first_probe_time
done
for state in permanent stale reachable delay noarp; do
  last=$((last + 1))
  ip neigh add 192.0.2.1$last lladdr 02:00:00:00:01:0$last nud $state dev left
  ip -6 neigh add 2001:db8::1$last lladdr 02:00:00:00:02:0$last nud $state dev left
done
ip neigh add 192.0.2.20 nud failed dev left
ip -6 neigh add 2001:db8::20 nud failed dev left
ip -6 neigh add fe80::99 lladdr 02:00:00:00:00:99 nud permanent dev left
ip -6 neigh add 2001:db8::21 lladdr 02:00:00:00:00:21 router nud permanent dev left
ip route add default via 192.0.2.11 dev left
ip route add default via 203.0.113.2 dev br0 metric 100
ip -6 route add default via 2001:db8::11 dev left
ip -6 route add default via fe80::99 dev left metric 2048
)";

class LosslessTest : public MasterTest
{
  protected:
    void SetUp() override
    {
        MasterTest::SetUp();
        if (!IsSkipped()) {
            network()->run(bed);
        }
    }

    // Without routes and connections, which are no tables of ours.
    std::set<std::string> instances() const
    {
        static const std::regex left("\\.1\\.3\\.6\\.1\\.2\\.1\\.(4\\.(21|24)|6\\.(13|19|20)|7\\.(5|7))\\..*");
        std::set<std::string> found;
        for (const char *group : {"2", "31", "4", "5", "6", "7"}) {
            for (const std::string &row : rows(mib2 + "." + group)) {
                const std::string instance = row.substr(0, row.find(' '));
                if (!std::regex_match(instance, left)) {
                    found.insert(instance);
                }
            }
        }
        return found;
    }

    // Of snmpd alone.
    std::set<std::string> mastersInstances()
    {
        startMaster();
        std::set<std::string> alone = instances();
        EXPECT_GT(alone.size(), 1000u);
        for (const char *row :
             {"4.34.1.3.1.4.198.51.100.127", "4.34.1.3.1.4.10.1.1.1", "4.37.1.4.1.4.192.0.2.11", "4.35.1.4"}) {
            const auto first = alone.lower_bound("." + mib2 + "." + row);
            EXPECT_TRUE(first != alone.end() && first->starts_with("." + mib2 + "." + row)) << "the bed lacks " << row;
        }
        return alone;
    }

    static nlohmann::json exceptions() { return nlohmann::json::parse(std::ifstream(IPMIB_NO_COUNTERPART)); }

    // The exception under which an instance is not there is counted.
    static void expectNothingLost(const std::set<std::string> &before, const std::set<std::string> &now)
    {
        const nlohmann::json list = exceptions();
        std::vector<unsigned> used(list.size());
        for (const std::string &instance : before) {
            if (now.contains(instance)) {
                continue;
            }
            const auto excuse = std::ranges::find_if(list, [&](const nlohmann::json &entry) {
                return hasCounterpart(instance, entry["theirs"], entry["ours"], now);
            });
            if (excuse == list.end()) {
                ADD_FAILURE() << instance << " is lost";
            } else {
                ++used[static_cast<std::size_t>(excuse - list.begin())];
            }
        }
        for (std::size_t i = 0; i < used.size(); ++i) {
            EXPECT_GT(used[i], 0u) << list[i] << " is not needed";
        }
    }

  private:
    static bool hasCounterpart(const std::string &instance, const std::string &theirs, const std::string &ours,
                               const std::set<std::string> &now)
    {
        const std::string group = "." + mib2 + ".4";
        const std::string place = instance.substr(0, group.size()) == group ? instance.substr(group.size()) : "";
        const std::regex pattern(theirs);
        if (!std::regex_match(place, pattern)) {
            return false;
        }
        const std::regex wanted(std::regex_replace(place, pattern, ours));
        return std::ranges::any_of(now, [&](const std::string &other) {
            return other.starts_with(group) && std::regex_match(other.substr(group.size()), wanted);
        });
    }
};

TEST_F(LosslessTest, AsSubagentByDefaultAndWhenAllIsTaken)
{
    const std::set<std::string> before = mastersInstances();
    startSubagent();
    expectNothingLost(before, instances());
    reconfigureSubagent("serve all take\n");
    expectNothingLost(before, instances());
}

TEST_F(LosslessTest, AMasterHasItsOwnAgainWhenTheSubagentIsKilled)
{
    const std::set<std::string> before = mastersInstances();
    startSubagent("serve all take\n");
    agent().signal(SIGKILL);
    agent().wait();
    EXPECT_TRUE(eventually([this] { return !isThere(interfaceRow); }));
    const std::set<std::string> now = instances();
    for (const std::string &instance : before) {
        EXPECT_TRUE(now.contains(instance)) << instance;
    }
}

TEST_F(LosslessTest, InsideSnmpd)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
    const std::set<std::string> before = mastersInstances();
    for (const char *wish : {"", "ipmibServe all take\n"}) {
        killMaster();
        startMaster(std::string("dlmod ipmib ") + IPMIB_SNMPD_OBJECT + "\n" + wish);
        expectNothingLost(before, instances());
    }
}

TEST_F(LosslessTest, StandAlone)
{
    const std::set<std::string> before = mastersInstances();
    killMaster();
    startAgent(everybody, {"--platform", "linux"});
    const std::set<std::string> now = instances();
    expectNothingLost(before, now);
    for (const std::string &instance : now) {
        EXPECT_FALSE(std::regex_match(instance, std::regex(R"(\.1\.3\.6\.1\.2\.1\.4\.31\.3\.1\.\d+\.1\..*)")))
            << instance << " is a zero of something that nobody counts";
    }
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
