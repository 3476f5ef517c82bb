// SPDX-License-Identifier: BSD-3-Clause
// The reader of scenario files: any text gives a device whose rows ascend, or one line about a mistake.
#include "bytes.h"

#include "scenario/read.h"
#include "scenario/value.h"

#include <sys/mman.h>
#include <unistd.h>

#include <string>

using namespace ipmib::fuzz;
using namespace ipmib::simulated;

namespace
{

// A file in memory, as the reader wants one.
class File
{
  public:
    File(const std::uint8_t *data, std::size_t size) : descriptor_(memfd_create("scenario", MFD_CLOEXEC))
    {
        require(descriptor_ >= 0 && write(descriptor_, data, size) == static_cast<ssize_t>(size),
                "the fuzzer can write its file");
    }
    ~File() { close(descriptor_); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    int descriptor_;
};

void walk(const Device &device)
{
    std::uint32_t last = 0;
    for (const Interface *interface = device.after(0); interface; interface = device.after(last)) {
        require(interface->ifIndex > last && interface->ifIndex <= highestIfIndex, "interfaces ascend");
        last = interface->ifIndex;
        device.linkLocal(last);
        const Prefix *prefix = device.firstPrefix(last);
        while (prefix != nullptr) {
            const Prefix *next = device.prefixAfter(prefix->key());
            require(next == nullptr || prefix->key() < next->key(), "prefixes ascend");
            prefix = next;
        }
    }
    for (const auto of : {Device::RouterClass::global, Device::RouterClass::linkLocal}) {
        for (const Router *router = device.firstRouter(of); router; router = device.routerAfter(of, router->key())) {
            require(device.router(router->key()) == router, "a router is found by its key");
        }
    }
    device.systemTraffic(IPMIB_IPV6);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const File file(data, size);
    try {
        Device device = readScenario(file.path()).device;
        for (const Time time : {Time{0}, Time{1'500}, Time{1'000'000'000'000}}) {
            device.setTime(time);
            walk(device);
        }
    } catch (const ScenarioError &error) {
        const std::string text = error.what();
        require(text.starts_with(file.path() + ": "), "a mistake is told with its file");
    }
    return 0;
}
