// SPDX-License-Identifier: BSD-3-Clause
// ipmibd --ipv4-accounting on a router: what SNMP says of the datagrams that pass, and what it leaves behind.
#include "netns/process.h"
#include "netns/router_bed.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace
{

using ipmib::netns::ifIndex;
using ipmib::netns::Process;
using ipmib::netns::RouterBed;

constexpr unsigned octets = 528; // of every datagram, IP header included
constexpr char listenOn[] = "127.0.0.1:1161";

// The columns of ipIfStatsTable that IPv4 accounting fills; the wide ones where there are two.
struct Row {
    std::uint64_t inReceives, inOctets, outRequests, outForwDatagrams, outTransmits, outOctets, inMcast, outMcast;
    bool operator==(const Row &) const = default;
};
constexpr std::array columns = {4, 6, 21, 24, 31, 33, 34, 38};

std::ostream &operator<<(std::ostream &stream, const Row &row)
{
    return stream << "received " << row.inReceives << " (" << row.inOctets << " octets), requested " << row.outRequests
                  << ", forwarded " << row.outForwDatagrams << ", sent " << row.outTransmits << " (" << row.outOctets
                  << " octets), multicast " << row.inMcast << " in " << row.outMcast << " out";
}

class Ipv4AccountingOverSnmp : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        bed_.emplace();
        if (std::system("nft list ruleset >/dev/null 2>&1 && snmpget -V 2>/dev/null") != 0) {
            GTEST_SKIP() << "needs nft with nf_tables, and snmpget";
        }
        char name[] = "/tmp/ipmib-traffic-XXXXXX";
        directory_ = mkdtemp(name);
        std::ofstream(directory_ / "ipmibd.conf") << "rocommunity public\n";
        openManager();
    }

    void TearDown() override
    {
        agent_.reset();
        bed_.reset();
        unsetenv("NOTIFY_SOCKET");
        close(manager_);
        if (!directory_.empty()) {
            std::filesystem::remove_all(directory_);
        }
    }

    std::vector<std::string> agentWords() const
    {
        return {IPMIBD,
                "-f",
                "-C",
                "-c",
                directory_ / "ipmibd.conf",
                "-Lf",
                directory_ / "log",
                "--ipv4-accounting",
                std::string("udp:") + listenOn};
    }

    void startAgent()
    {
        agent_ = std::make_unique<Process>(bed_->routerSpace, agentWords());
        std::string message;
        while (message != "READY=1") { // behind what an agent before it had to say
            char buffer[256];
            const ssize_t length = recv(manager_, buffer, sizeof buffer, 0);
            ASSERT_GT(length, 0) << "ipmibd does not come to serve";
            message.assign(buffer, static_cast<std::size_t>(length));
        }
    }

    // Returns the exit status, or minus the signal.
    int endAgent(int signal)
    {
        agent_->signal(signal);
        return agent_->wait();
    }

    std::string ruleset() const { return bed_->routerSpace.run("nft list ruleset"); }

    Row row(const char *interface) const
    {
        std::string command = std::string("snmpget -v2c -c public -Oqv ") + listenOn;
        for (const int column : columns) {
            command += " .1.3.6.1.2.1.4.31.3.1." + std::to_string(column) + ".1." + std::to_string(ifIndex(interface));
        }
        std::istringstream answers(bed_->routerSpace.run(command));
        Row row{};
        for (std::uint64_t *value : {&row.inReceives, &row.inOctets, &row.outRequests, &row.outForwDatagrams,
                                     &row.outTransmits, &row.outOctets, &row.inMcast, &row.outMcast}) {
            EXPECT_TRUE(answers >> *value) << answers.str();
        }
        return row;
    }

    std::optional<RouterBed> bed_;
    std::unique_ptr<Process> agent_;

  private:
    // Where a service manager hears that a service is ready.
    void openManager()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (directory_ / "notify").string().copy(address.sun_path, sizeof address.sun_path - 1);
        manager_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(manager_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        const timeval patience{10, 0};
        setsockopt(manager_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setenv("NOTIFY_SOCKET", address.sun_path, 1);
    }

    std::filesystem::path directory_;
    int manager_ = -1;
};

} // namespace

TEST_F(Ipv4AccountingOverSnmp, DatagramsThatPassMoveTheRowsByExactlyThat)
{
    startAgent();
    EXPECT_EQ(row("lan"), Row{});
    EXPECT_EQ(row("wan"), Row{});

    bed_->client.send(RouterBed::serverAddress, bed_->server, 1000, octets);
    EXPECT_EQ(row("lan"), (Row{1000, 1000 * octets, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row("wan"), (Row{0, 0, 0, 1000, 1000, 1000 * octets, 0, 0}));

    bed_->client.send("224.0.0.250", 50, octets);
    bed_->server.send(RouterBed::wanAddress, bed_->router, 20, octets);
    bed_->router.send(RouterBed::serverAddress, bed_->server, 30, octets);
    EXPECT_EQ(row("lan"), (Row{1050, 1050 * octets, 0, 0, 0, 0, 50, 0}));
    EXPECT_EQ(row("wan"), (Row{20, 20 * octets, 30, 1000, 1030, 1030 * octets, 0, 0}));
}

TEST_F(Ipv4AccountingOverSnmp, TheRulesetIsTheSameAfterTheEndAndAfterAKill)
{
    bed_->routerSpace.run("nft 'table inet fence { counter c { packets 7 bytes 9; };"
                          " chain c { type filter hook input priority filter; policy accept; tcp dport 9 drop; }; }'");
    const std::string before = ruleset();
    startAgent();
    EXPECT_NE(ruleset(), before);
    bed_->client.send(RouterBed::serverAddress, bed_->server, 20, octets);
    EXPECT_EQ(endAgent(SIGTERM), 0);
    EXPECT_EQ(ruleset(), before);

    startAgent();
    bed_->client.send(RouterBed::serverAddress, bed_->server, 20, octets);
    EXPECT_EQ(endAgent(SIGKILL), -SIGKILL);
    EXPECT_EQ(ruleset(), before);

    startAgent();
    EXPECT_EQ(row("lan"), Row{});
    bed_->client.send(RouterBed::serverAddress, bed_->server, 5, octets);
    EXPECT_EQ(row("lan").inReceives, 5U);
}

TEST_F(Ipv4AccountingOverSnmp, WithoutTheRightItDoesNotStart)
{
    std::vector<std::string> words = {"setpriv", "--bounding-set", "-net_admin"};
    for (const std::string &word : agentWords()) {
        words.push_back(word);
    }
    EXPECT_EQ(Process(bed_->routerSpace, words).wait(), 1);
    EXPECT_EQ(ruleset(), "");
}
