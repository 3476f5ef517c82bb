// SPDX-License-Identifier: BSD-3-Clause
// Sends one kind of request to the module many times, for a run under callgrind that counts the module's instructions.
//
//   bench_module list                             table, operation and columns of every kind
//   bench_module TABLE get|getnext one|all N      N requests for one column, or for all of them
#include "free_platform.h"
#include "request_shapes.h"

#include <ipmib/module.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

int list()
{
    for (const TableShape &shape : shapes) {
        for (const std::string_view operation : {"get", "getnext"}) {
            if (operation == "getnext" && shape.isScalars()) {
                continue;
            }
            for (const char *columns : {"one", "all"}) {
                std::printf("%s %s %s\n", shape.name, operation.data(), columns);
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
    addColumns(request, shape, all);
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
