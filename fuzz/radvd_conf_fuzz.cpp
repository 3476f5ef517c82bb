// SPDX-License-Identifier: BSD-3-Clause
// The parser of radvd.conf: any text gives interfaces with settings within their ranges, or one line about a mistake.
#include "bytes.h"

#include "advertisements/radvd_conf.h"

using namespace ipmib::fuzz;
using namespace ipmib::platform;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<char> text(data, data + size); // exactly as long, so that a sanitizer sees what lies behind it
    RadvdConf conf;
    conf["stale"];
    const auto error = parseRadvdConf({text.data(), text.size()}, "radvd.conf", conf);
    if (error) {
        require(error->starts_with("radvd.conf:"), "a mistake is told with its place");
        require(error->find('\n') == std::string::npos, "a mistake is told in one line");
        require(conf.size() == 1 && conf.contains("stale"), "a mistake leaves the settings alone");
        return 0;
    }
    for (const auto &[name, interface] : conf) {
        require(!name.empty(), "an interface has a name");
        require(interface.hopLimit <= 255, "a hop limit has 8 bits");
        require(interface.line >= 1, "an interface stands on a line");
    }
    return 0;
}
