// SPDX-License-Identifier: BSD-3-Clause
// The parser of the kernel's counter text: any text leaves counters, and reading it twice gives the same ones.
#include "bytes.h"

#include "counters/snmp6_text.h"

using namespace ipmib::fuzz;
using namespace ipmib::platform;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<char> text(data, data + size); // exactly as long, so that a sanitizer sees what lies behind it
    Ip6Counters ip6[2]{};
    Icmp6Counters icmp6[2]{};
    for (int i = 0; i < 2; ++i) {
        parseSnmp6({text.data(), text.size()}, ip6[i], icmp6[i]);
    }
    require(icmp6[0].inType == icmp6[1].inType && icmp6[0].outType == icmp6[1].outType &&
                icmp6[0].inMsgs == icmp6[1].inMsgs && icmp6[0].outMsgs == icmp6[1].outMsgs &&
                icmp6[0].inErrors == icmp6[1].inErrors,
            "the same text has the same counters");
    return 0;
}
