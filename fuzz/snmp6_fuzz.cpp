// SPDX-License-Identifier: BSD-3-Clause
// The parsers of the kernel's counter texts: any text leaves counters, and reading it twice gives the same ones.
#include "bytes.h"

#include "counters/ipv4_counter_text.h"
#include "counters/snmp6_text.h"

using namespace ipmib::fuzz;
using namespace ipmib::platform;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<char> text(data, data + size); // exactly as long, so that a sanitizer sees what lies behind it
    const std::string_view view(text.data(), text.size());
    Snmp6Counters counters[2];
    Ipv4CounterText headed; // the second reading goes by the order that the first one has left
    Ipv4CounterText::Values ipv4[2];
    for (int i = 0; i < 2; ++i) {
        parseSnmp6(view, counters[i]);
        headed.parse(view, ipv4[i]);
    }
    require(counters[0] == counters[1], "the same text has the same counters");
    require(ipv4[0] == ipv4[1], "and so has one with lines of names");
    return 0;
}
