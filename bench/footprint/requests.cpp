// SPDX-License-Identifier: BSD-3-Clause
// Sends requests of every kind to the module once, for a run under emulation.
//
//   footprint_requests kinds    each table, operation, one and all columns, between two marks that a plugin of the
//                               emulator counts instructions between; prints one line for each
//   footprint_requests stack    prints the deepest stack of any request to each table
#include "painted_stack.h"
#include "request_shapes.h"

#include <ipmib/module.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

extern "C" {

// The marks.
[[gnu::noinline]] void footprint_begin()
{
    asm volatile("");
}
[[gnu::noinline]] void footprint_end()
{
    asm volatile("");
}
}

namespace
{

int kinds()
{
    for (const TableShape &shape : shapes) {
        for (const bool next : {false, true}) {
            if (next && shape.isScalars()) {
                continue;
            }
            for (const bool all : {false, true}) {
                FreeRequest request(shape.id, next ? OP_GETNEXT : OP_GET);
                addIndex(request, shape, next);
                addColumns(request, shape, all);
                FreeReply reply;
                footprint_begin();
                const std::uint32_t error = IP_ConfigCallBack(request.handle(), reply.handle());
                footprint_end();
                if (error != 0) {
                    std::fprintf(stderr, "footprint_requests: %s refused the request\n", shape.name);
                    return 1;
                }
                std::printf("%s %s %s\n", shape.name, next ? "getnext" : "get", all ? "all" : "one");
            }
        }
    }
    return 0;
}

constexpr std::uint8_t linkLocal[24] = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr std::uint8_t global[24] = {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};

// Which column of a table's index is an address; the others are numbers.
std::uint32_t addressColumn(const TableShape &shape)
{
    switch (shape.id) {
    case 6:
    case 8:
        return 2;
    case 5:
    case 7:
        return 3;
    default:
        return 0;
    }
}

std::size_t stackOfRequest(const TableShape &shape, std::uint32_t operation, std::uint32_t parts, std::uint32_t number,
                           const std::uint8_t *address, std::uint32_t octets)
{
    FreeRequest request(shape.id, operation);
    for (std::uint32_t column = 1; column <= parts; ++column) {
        if (column == addressColumn(shape)) {
            request.addOctets(column, address, octets);
        } else {
            request.addNumber(column, number);
        }
    }
    addColumns(request, shape, true);
    FreeReply reply;
    return stackOf([&] { IP_ConfigCallBack(request.handle(), reply.handle()); });
}

// Every length of the index, numbers that are versions, types, interfaces and none of these, addresses short, fitting
// and long.
std::size_t deepestOf(const TableShape &shape)
{
    std::size_t deepest = 0;
    for (const std::uint32_t operation : {OP_GET, OP_GETNEXT}) {
        for (std::uint32_t parts = 0; parts <= shape.indexCount; ++parts) {
            for (const std::uint32_t number : {0, 1, 2, 3, 4, 5, 135, 0xFFFF}) {
                for (const std::uint8_t *const address : {global, linkLocal}) {
                    for (const std::uint32_t octets : {0, 15, 16, 20, 21}) {
                        deepest = std::max(deepest, stackOfRequest(shape, operation, parts, number, address, octets));
                    }
                }
            }
        }
    }
    return deepest;
}

int stack()
{
    for (const TableShape &shape : shapes) {
        std::printf("%s %zu\n", shape.name, deepestOf(shape));
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    ip_IcmpMsgStats_Init();
    const std::string_view what = argc == 2 ? argv[1] : "";
    if (what == "kinds") {
        return kinds();
    }
    if (what == "stack") {
        return stack();
    }
    std::fprintf(stderr, "usage: footprint_requests kinds|stack\n");
    return 2;
}
