// SPDX-License-Identifier: BSD-3-Clause
// Datagrams of the packet filter, or of what might pretend to be it, as answers to the questions about one interface.
#include "bytes.h"

#include "accounting/accounting_table.h"

#include <iterator>

using namespace ipmib::fuzz;
using namespace ipmib::platform;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::uint32_t first = 1;
    constexpr std::uint32_t count = 1 + std::size(countedSets); // the table, and an element of each set
    const std::vector<char> datagram(data, data + size);        // aligned, and exactly as long
    readNftAnswers(datagram, first, count, [&](std::size_t index, int error, const nlmsghdr &answer) {
        require(index < count, "an answer is one to a question");
        require(error >= 0 && error < 4096, "an error is an errno");
        const auto traffic = trafficOf(answer);
        const auto again = trafficOf(answer);
        require(traffic.has_value() == again.has_value() &&
                    (!traffic || (traffic->packets == again->packets && traffic->octets == again->octets)),
                "the same answer has the same numbers");
    });
    return 0;
}
