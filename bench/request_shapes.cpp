// SPDX-License-Identifier: BSD-3-Clause
// The module's tables as a benchmark asks them.
#include "request_shapes.h"

namespace
{

constexpr std::uint8_t address[16] = {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};
constexpr std::uint8_t prefix[16] = {0x20, 0x01, 0x0D, 0xB8};

} // namespace

void addIndex(FreeRequest &request, const TableShape &shape, bool next)
{
    switch (shape.id) {
    case 1:
        break;
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

void addColumns(FreeRequest &request, const TableShape &shape, bool all)
{
    const std::uint32_t last = all ? shape.columnCount : shape.indexCount + 1;
    for (std::uint32_t column = shape.indexCount + 1; column <= last; ++column) {
        request.addColumn(column);
    }
}
