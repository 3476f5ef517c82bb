// SPDX-License-Identifier: BSD-3-Clause
// Once its buffers have grown to what packets need, answering takes no memory from the heap.
#include "resolver.h"

#include "testing/test_module.h"
#include "testing/test_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace
{

std::size_t allocations = 0;

} // namespace

// Not inlined: GCC takes the two ends of an inlined pair for a mismatch.
[[gnu::noinline]] void *operator new(std::size_t size)
{
    ++allocations;
    if (void *memory = std::malloc(size ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void *memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace ipmib::host::testing
{
namespace
{

// A table with the rows 1 to 1000 whose two columns hold 16 octets each.
std::uint32_t answer(MorRequest *request, MorReply *reply)
{
    MorPara *index = MOR_GetParaFromMsgByMOR(request, 0, ip_ParamId(1, 1));
    std::uint32_t row = index ? MOR_GetData32(index) : 0;
    if (MOR_GetMsgOpType(request) == OP_GETNEXT && ++row <= 1000) {
        append(reply, ip_ParamId(1, 1), VT_INTEGER, row);
    }
    if (row < 1 || row > 1000) {
        return fail(reply, MOR_GetMsgOpType(request) == OP_GET ? ERR_NO_INSTANCE : ERR_END_OF_TABLE);
    }
    const std::uint8_t octets[16] = {static_cast<std::uint8_t>(row)};
    for (const std::uint32_t column : {2u, 3u}) {
        MOR_AppendPara2Msg(reply, 0, ip_ParamId(1, column), VT_OCTETS, reinterpret_cast<std::uintptr_t>(octets), 16);
    }
    return 0;
}

TEST(Allocations, thereAreNoneOnceBuffersHaveGrown)
{
    TestTree tree;
    MibTreeNode &entry = tree.addTable(tree.root(), 1, 1, {integer(1, 9999)});
    tree.addColumn(entry, 2, octets(0, 255));
    tree.addColumn(entry, 3, octets(0, 255));
    TestModule module(answer);
    Resolver resolver(tree.root(), TestModule::callback, nullptr);

    constexpr std::size_t width = 40;
    std::vector<Oid> names(width, Oid{1, 1, 1, 2});
    std::vector<Variable> variables(width);
    const auto walkOn = [&](std::size_t steps) {
        for (std::size_t step = 0; step < steps; ++step) {
            for (std::size_t i = 0; i < width; ++i) {
                variables[i].asked = names[i].view();
            }
            step % 3 == 2 ? resolver.get(variables) : resolver.getNext(variables, {});
            for (std::size_t i = 0; i < width; ++i) {
                if (step % 3 != 2 && variables[i].status == Status::ok) {
                    names[i] = variables[i].name;
                }
            }
        }
    };
    for (std::size_t i = 0; i < width; ++i) { // half of them elsewhere, each in a row of its own
        if (i % 2) {
            names[i].append(static_cast<SubId>(i * 20));
        }
    }
    walkOn(3);
    const std::size_t before = allocations;
    walkOn(300);
    EXPECT_EQ(allocations, before);
    EXPECT_GT(before, 0u);
    EXPECT_EQ(variables[0].status, Status::ok);
}

} // namespace
} // namespace ipmib::host::testing
