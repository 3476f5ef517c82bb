// SPDX-License-Identifier: BSD-3-Clause
// Sends one kind of request to the module many times, for a run under callgrind that counts the module's instructions.
//
//   bench_module list                             table, operation and columns of every kind
//   bench_module TABLE get|getnext one|all N      N requests for one column, or for all of them
#include "free_message.h"
#include "free_platform.h"
#include "mibtree/catalogue.h"

#include <ipmib/module.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

struct TableShape {
    const char *name;
    std::uint32_t id;
    std::uint32_t indexCount;
    std::uint32_t columnCount;
};

consteval TableShape shape(const char *name, std::uint32_t id)
{
    return {name, id, ipmib::mibtree::indexColumns(id), ipmib::mibtree::servedColumns(id)};
}

constexpr TableShape shapes[] = {
    shape("ipv6InterfaceTable", 2),   shape("ipSystemStatsTable", 3),    shape("ipIfStatsTable", 4),
    shape("ipAddressPrefixTable", 5), shape("ipAddressTable", 6),        shape("ipNetToPhysicalTable", 7),
    shape("ipDefaultRouterTable", 8), shape("ipv6RouterAdvertTable", 9), shape("icmpStatsTable", 10),
    shape("icmpMsgStatsTable", 11),
};

constexpr std::uint8_t address[16] = {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};
constexpr std::uint8_t prefix[16] = {0x20, 0x01, 0x0D, 0xB8};

// The index of a row that has both a value and a successor.
void addIndex(FreeRequest &request, const TableShape &shape, bool next)
{
    switch (shape.id) {
    case 3:
    case 10:
        request.addNumber(1, next ? 1 : 2);
        break;
    case 4:
        request.addNumber(1, 2);
        request.addNumber(2, 2);
        break;
    case 5:
        request.addNumber(1, 2);
        request.addNumber(2, 2);
        request.addOctets(3, prefix, sizeof prefix);
        request.addNumber(4, 64);
        break;
    case 6:
        request.addNumber(1, 2);
        request.addOctets(2, address, sizeof address);
        break;
    case 7:
        request.addNumber(1, 2);
        request.addNumber(2, 2);
        request.addOctets(3, address, sizeof address);
        break;
    case 8:
        request.addNumber(1, 2);
        request.addOctets(2, address, sizeof address);
        request.addNumber(3, 2);
        break;
    case 11:
        request.addNumber(1, 2);
        request.addNumber(2, 135);
        break;
    default:
        request.addNumber(1, 2);
        break;
    }
}

int list()
{
    for (const TableShape &shape : shapes) {
        for (const char *operation : {"get", "getnext"}) {
            for (const char *columns : {"one", "all"}) {
                std::printf("%s %s %s\n", shape.name, operation, columns);
            }
        }
    }
    return 0;
}

// What callgrind counts: everything below this function.
[[gnu::noinline]] std::uint32_t measuredRequest(FreeRequest &request, FreeReply &reply)
{
    return IP_ConfigCallBack(request.handle(), reply.handle());
}

int run(const TableShape &shape, bool next, bool all, long count)
{
    FreeRequest request(shape.id, next ? OP_GETNEXT : OP_GET);
    addIndex(request, shape, next);
    for (std::uint32_t column = shape.indexCount + 1; column <= (all ? shape.columnCount : shape.indexCount + 1);
         ++column) {
        request.addColumn(column);
    }
    FreeReply reply;
    for (long done = 0; done < count; ++done) {
        reply.clear();
        if (measuredRequest(request, reply) != 0) {
            std::fprintf(stderr, "bench_module: %s refused the request\n", shape.name);
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    ip_IcmpMsgStats_Init();
    if (argc == 2 && std::string_view(argv[1]) == "list") {
        return list();
    }
    if (argc >= 5) {
        if (argc == 6) {
            freePrefixes = static_cast<std::uint32_t>(std::atol(argv[5]));
        }
        for (const TableShape &shape : shapes) {
            if (std::strcmp(shape.name, argv[1]) == 0) {
                return run(shape, std::string_view(argv[2]) == "getnext", std::string_view(argv[3]) == "all",
                           std::atol(argv[4]));
            }
        }
    }
    std::fprintf(stderr, "usage: bench_module list | TABLE get|getnext one|all COUNT [PREFIXES]\n");
    return 2;
}
