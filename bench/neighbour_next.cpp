// SPDX-License-Identifier: BSD-3-Clause
// GETNEXT requests over the neighbours of this network namespace, for a run under callgrind that counts their
// instructions from the packet's beginning to the value: platform, module and resolver.
//
//   bench_neighbour_next PLATFORM_LIBRARY MODULE_LIBRARY walk|random REQUESTS
//
// `walk` goes on from the middle of the table, each request from what the one before found; `random` asks from rows all
// over the table.
#include "host/plugin.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>
#include <vector>

namespace
{

using namespace ipmib::host;

const Oid physAddress{1, 3, 6, 1, 2, 1, 4, 35, 1, 4};
const Oid entry{1, 3, 6, 1, 2, 1, 4, 35, 1};

bool next(Plugin &plugin, const Oid &after, Oid &found)
{
    Variable variable;
    variable.asked = after.view();
    plugin.platform()->begin_packet();
    plugin.resolver().getNext({&variable, 1}, entry.view());
    found = variable.name;
    return variable.status == Status::ok && isWithin(found.view(), physAddress.view());
}

} // namespace

// Its name is what callgrind counts by.
[[gnu::noinline]] static void measuredRequests(Plugin &plugin, const std::vector<Oid> &names)
{
    Oid found;
    for (const Oid &name : names) {
        if (!next(plugin, name, found)) {
            std::abort();
        }
    }
}

int main(int argc, char **argv)
{
    const std::string_view order = argc == 5 ? argv[3] : "";
    if (order != "walk" && order != "random") {
        std::fprintf(stderr, "usage: bench_neighbour_next PLATFORM_LIBRARY MODULE_LIBRARY walk|random REQUESTS\n");
        return 2;
    }
    const auto requests = static_cast<std::size_t>(std::atol(argv[4]));
    PluginOptions options;
    options.platform = argv[1];
    options.module = argv[2];
    Plugin plugin(options);
    std::vector<Oid> all{physAddress};
    Oid found;
    while (next(plugin, all.back(), found)) {
        all.push_back(found);
    }
    if (all.size() <= 2 * requests) {
        std::fprintf(stderr, "bench_neighbour_next: %zu neighbours are too few\n", all.size() - 1);
        return 1;
    }
    all.pop_back(); // the last one has no successor
    if (order == "random") {
        std::shuffle(all.begin(), all.end(), std::mt19937(1));
    }
    const auto middle = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
    measuredRequests(plugin, {middle, middle + static_cast<std::ptrdiff_t>(requests)});
}
