// SPDX-License-Identifier: BSD-3-Clause
// IPv4 traffic by interface, which Linux does not count: a table of our own in the packet filter counts it.
#include "accounting/ipv4_accounting.h"

#include "accounting/accounting_table.h"
#include "core/log.h"

#include <cerrno>
#include <cstring>

namespace ipmib::platform
{

namespace
{

constexpr std::size_t kernelSetSize = 65535; // of a set that names no size

std::string explain(const NetfilterSocket::Outcome &outcome)
{
    const std::string what = std::string("ipv4 accounting: cannot make the nftables table ip ") + accountingTableName;
    if (outcome.error == EPERM && outcome.refusedAsWhole) {
        return what + ": CAP_NET_ADMIN is missing";
    }
    if (outcome.error == EPERM) {
        return what + ": it belongs to another process";
    }
    return what + ": " + std::strerror(outcome.error) + " (does the kernel have nf_tables with IPv4?)";
}

} // namespace

std::string Ipv4Accounting::start()
{
    stop();
    if (const int error = socket_.open(); error != 0) {
        return explain({error});
    }
    if (const NetfilterSocket::Outcome outcome = makeTable(); outcome.error != 0) {
        socket_.close();
        return explain(outcome);
    }
    return "";
}

void Ipv4Accounting::stop()
{
    if (socket_.isOpen()) {
        NftMessages batch = socket_.batch();
        removeTable(batch);
        const int error = socket_.commit(batch).error;
        if (error != 0 && error != ENOENT && !settings_.owned) {
            logError("ipv4 accounting: cannot remove the nftables table ip %s: %s", accountingTableName,
                     std::strerror(error));
        }
        socket_.close(); // which removes an owned table if we may not
    }
    reported_ = 0;
    fullReported_ = false;
}

NetfilterSocket::Outcome Ipv4Accounting::makeTable()
{
    NftMessages batch = socket_.batch();
    addTable(batch, settings_.owned, settings_.interfaces);
    const NetfilterSocket::Outcome outcome = socket_.commit(batch);
    if (settings_.owned && (outcome.error == EOPNOTSUPP || outcome.error == EINVAL)) {
        settings_.owned = false; // Linux before 5.12 refuses the flag
        return makeTable();
    }
    return outcome;
}

IpMibIfStat Ipv4Accounting::countersOf(std::uint32_t ifIndex)
{
    IpMibIfStat stat{};
    if (!socket_.isOpen()) {
        return stat;
    }
    Row row;
    const int error = read(ifIndex, row);
    if (error == ENOENT) {
        remake();
        return stat;
    }
    report(error);
    for (std::size_t i = 0; i < row.size(); ++i) {
        const CountedSet &set = countedSets[i];
        const Traffic traffic = row[i].value_or(Traffic{});
        stat.*set.packets = traffic.packets;
        if (set.octets != nullptr) {
            stat.*set.octets = traffic.octets;
        }
    }
    return stat;
}

void Ipv4Accounting::linkRemoved(std::uint32_t ifIndex)
{
    Row row;
    if (!socket_.isOpen() || read(ifIndex, row) != 0) {
        return;
    }
    // Only what is there: a batch that the kernel has to take back costs it milliseconds.
    NftMessages batch = socket_.batch();
    bool any = false;
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (row[i]) {
            removeElement(batch, countedSets[i], ifIndex);
            any = true;
        }
    }
    if (any) {
        report(socket_.commit(batch).error);
    }
}

void Ipv4Accounting::checkRoomFor(std::size_t interfaces)
{
    const std::size_t room = settings_.interfaces != 0 ? settings_.interfaces : kernelSetSize;
    if (socket_.isOpen() && interfaces > room && !fullReported_) {
        fullReported_ = true;
        logWarning("ipv4 accounting: it counts up to %zu interfaces and there are %zu; some are not counted", room,
                   interfaces);
    }
}

// 0, ENOENT when the table itself is gone, or another errno.
int Ipv4Accounting::read(std::uint32_t ifIndex, Row &row)
{
    NftMessages questions = socket_.questions();
    askForTable(questions);
    for (const CountedSet &set : countedSets) {
        askForElement(questions, set, ifIndex);
    }
    int result = 0;
    const int error = socket_.ask(questions, [&](std::size_t index, int refusal, const nlmsghdr &answer) {
        const bool element = index > 0;
        if (refusal != 0) {
            if (result == 0 && !(element && refusal == ENOENT)) {
                result = refusal;
            }
        } else if (element) {
            row[index - 1] = trafficOf(answer);
        }
    });
    return error != 0 ? error : result;
}

// Somebody flushed the whole ruleset: counting starts again from nothing.
void Ipv4Accounting::remake()
{
    const int error = makeTable().error;
    if (error == 0) {
        logWarning("ipv4 accounting: somebody removed the nftables table ip %s; it is made anew and counts from 0",
                   accountingTableName);
    }
    report(error);
}

void Ipv4Accounting::report(int error)
{
    if (error == reported_) {
        return;
    }
    reported_ = error;
    if (error != 0) {
        logError("ipv4 accounting: cannot use the nftables table ip %s: %s", accountingTableName, std::strerror(error));
    } else {
        logInfo("ipv4 accounting: the nftables table ip %s can be used again", accountingTableName);
    }
}

} // namespace ipmib::platform
