// SPDX-License-Identifier: BSD-3-Clause
// radvd sends advertisements in a router's namespace, radvdump decodes them in a host's: the row of the router's
// interface, asked of the module over the Linux platform, must say the same.
#include "host/plugin.h"
#include "netns/namespace.h"
#include "netns/process.h"
#include "programs.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <thread>

namespace
{

using ipmib::host::Oid;
using ipmib::host::Plugin;
using ipmib::host::Status;
using ipmib::host::Variable;
using ipmib::netns::Namespace;

// Columns of the table, by the option of radvd.conf whose value they show.
const std::map<std::string, std::uint32_t> columns = {
    {"AdvSendAdvert", 2},    {"AdvManagedFlag", 5},  {"AdvOtherConfigFlag", 6}, {"AdvLinkMTU", 7},
    {"AdvReachableTime", 8}, {"AdvRetransTimer", 9}, {"AdvCurHopLimit", 10},    {"AdvDefaultLifetime", 11}};
constexpr std::uint32_t maxIntervalColumn = 3;
constexpr std::uint32_t minIntervalColumn = 4;

std::uint64_t valueOf(const std::string &word)
{
    return word == "on" ? 1 : word == "off" ? 2 : std::stoull(word);
}

// The first advertisement in radvdump's output: option and value a line. What it does not mention is not sent.
std::map<std::uint32_t, std::uint64_t> decoded(const std::string &dump)
{
    std::map<std::uint32_t, std::uint64_t> values = {{7, 0}};
    std::istringstream lines(dump.substr(0, dump.find("# End of interface definition")));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string name;
        std::string value;
        words >> name >> value;
        if (const auto column = columns.find(name); column != columns.end() && !value.empty()) {
            value.pop_back(); // the semicolon
            values[column->second] = valueOf(value);
        }
    }
    return values;
}

class RadvdWire : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_PROGRAM("radvd");
        IPMIB_NEEDS_PROGRAM("radvdump");
        if (const std::string why = ipmib::netns::unavailable(); !why.empty()) {
            GTEST_SKIP() << why;
        }
        std::string name = testing::TempDir() + "radvdXXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        std::ofstream(folder_ + "/dump") << "";
        router_.emplace();
        host_.emplace();
        router_->sysctl("net/ipv6/conf/all/forwarding", "1");
        Namespace::connect(*router_, "lan0", *host_, "host0");
        lan0_ = router_->json("ip -j link show lan0")[0]["ifindex"];
    }
    void TearDown() override
    {
        if (!folder_.empty()) {
            std::filesystem::remove_all(folder_);
        }
    }

    std::string dump() const
    {
        std::ifstream file(folder_ + "/dump");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static bool eventually(const std::function<bool()> &condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return condition();
    }
    static std::ptrdiff_t linesOf(const std::string &text) { return std::ranges::count(text, '\n'); }

    // What the host decodes of what a router with these options sends.
    std::map<std::uint32_t, std::uint64_t> onTheWire(const std::string &options)
    {
        std::ofstream(conf()) << "interface lan0 {\n" << options << "\n};\n";
        ipmib::netns::Process listener(*host_, {"sh", "-c", "exec radvdump > " + folder_ + "/dump"});
        const auto listens = [&] { return linesOf(host_->file("/proc/thread-self/net/raw6")) > 1; };
        EXPECT_TRUE(eventually(listens)) << "radvdump opens no socket";
        ipmib::netns::Process radvd(*router_, {"radvd", "--nodaemon", "--logmethod", "stderr_clean", "--config", conf(),
                                               "--pidfile", folder_ + "/pid"});
        const bool arrived = eventually([&] { return dump().find("# End of interface") != std::string::npos; });
        EXPECT_TRUE(arrived) << "no advertisement arrived";
        return decoded(dump());
    }

    // The row of the router's interface.
    std::map<std::uint32_t, std::uint64_t> row()
    {
        const ipmib::netns::Inside inside(*router_);
        ipmib::host::PluginOptions options;
        options.platform = IPMIB_PLATFORM;
        options.module = IPMIB_MODULE;
        options.platformOptions = {{"radvd-conf", conf()}};
        Plugin plugin(options);
        plugin.platform()->begin_packet();
        std::vector<Oid> names;
        for (std::uint32_t column = 2; column <= 11; ++column) {
            names.push_back({1, 3, 6, 1, 2, 1, 4, 39, 1, column, lan0_});
        }
        std::vector<Variable> variables(names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            variables[i].asked = names[i].view();
        }
        plugin.resolver().get(variables);
        std::map<std::uint32_t, std::uint64_t> values;
        for (std::uint32_t column = 2; column <= 11; ++column) {
            EXPECT_EQ(variables[column - 2].status, Status::ok) << column;
            values[column] = variables[column - 2].value.number;
        }
        return values;
    }

    // The intervals do not show on the wire.
    void expectRow(const std::string &options, std::uint64_t maxInterval, std::uint64_t minInterval)
    {
        auto expected = onTheWire(options);
        expected[maxIntervalColumn] = maxInterval;
        expected[minIntervalColumn] = minInterval;
        EXPECT_EQ(row(), expected);
    }

    std::string conf() const { return folder_ + "/radvd.conf"; }

    std::string folder_;
    std::optional<Namespace> router_;
    std::optional<Namespace> host_;
    std::uint32_t lan0_ = 0;
};

TEST_F(RadvdWire, defaults)
{
    expectRow("AdvSendAdvert on;", 600, 198);
}

TEST_F(RadvdWire, everyOption)
{
    expectRow("# a real one\nAdvSendAdvert on; AdvManagedFlag on; AdvOtherConfigFlag on; AdvLinkMTU 1400;\n"
              "AdvReachableTime 12345; AdvRetransTimer 678; AdvCurHopLimit 42;\n"
              "MaxRtrAdvInterval 100; MinRtrAdvInterval 50; AdvDefaultLifetime 250;\n"
              "prefix 2001:db8:5::/64 { AdvOnLink on; AdvAutonomous on; };\n"
              "RDNSS 2001:db8:5::53 { AdvRDNSSLifetime 200; };",
              100, 50);
}

TEST_F(RadvdWire, valuesThatSayNothing)
{
    expectRow("AdvSendAdvert on; AdvCurHopLimit 0; AdvDefaultLifetime 0; AdvReachableTime 0; AdvRetransTimer 0;", 600,
              198);
}

TEST_F(RadvdWire, decimalIntervals)
{
    expectRow("AdvSendAdvert on; MaxRtrAdvInterval 10.5; MinRtrAdvInterval 3.5;", 10, 3);
}

TEST_F(RadvdWire, anInterfaceThatIsNotNamedDoesNotAdvertise)
{
    std::ofstream(conf()) << "interface other0 { AdvSendAdvert on; };";
    const std::map<std::uint32_t, std::uint64_t> expected = {{2, 2}, {3, 600}, {4, 198}, {5, 2},   {6, 2},
                                                             {7, 0}, {8, 0},   {9, 0},   {10, 64}, {11, 1800}};
    EXPECT_EQ(row(), expected);
}

} // namespace
