// SPDX-License-Identifier: BSD-3-Clause
// The resolver's identifiers, with the real module over a small device: what a get-next finds is the next row of the
// device's sorted list, and a get finds the same again.
#include "bytes.h"

#include "host/registry.h"
#include "host/resolver.h"
#include "host/testing/device.h"

#include <scripted/call_log.h>
#include <scripted/world.h>

#include <map>

using namespace ipmib::fuzz;
using namespace ipmib::host;
using namespace ipmib::host::testing;

namespace
{

void noComplaint(int, const char *line)
{
    require(false, line);
}

struct Device {
    ipmib::scripted::World world;
    Instances instances;
};

Device makeDevice(unsigned number)
{
    static const Columns columns = servedColumns(*Registry::ofProcess().trees().front().root);
    Random random(number);
    makeRandomDevice(random);
    ipmib::scripted::tellCalls(false); // a line for each of thousands of calls would take most of the time
    return {ipmib::scripted::world(), instancesOfDevice(columns)};
}

// Puts the device with this number in force. Each is made once: making one takes longer than asking it.
const Instances &useDevice(unsigned number)
{
    static std::map<unsigned, Device> devices;
    static unsigned current = UINT32_MAX;
    auto device = devices.find(number);
    if (device == devices.end()) {
        device = devices.emplace(number, makeDevice(number)).first;
    } else if (number != current) {
        ipmib::scripted::world() = device->second.world;
    }
    current = number;
    return device->second.instances;
}

Identifier readIdentifier(Bytes &bytes, const Instances &instances)
{
    const std::size_t place = bytes.byte() * std::size_t{256} + bytes.byte();
    Identifier identifier = instances.all()[place % instances.all().size()];
    for (std::uint32_t changes = bytes.below(4); changes > 0; --changes) {
        const std::size_t at = identifier.empty() ? 0 : bytes.byte() % identifier.size();
        switch (bytes.below(4)) {
        case 0:
            identifier.resize(at);
            break;
        case 1:
            for (std::uint32_t more = bytes.below(32); more > 0 && identifier.size() < maxOidLength; --more) {
                identifier.push_back(bytes.number());
            }
            break;
        default:
            if (!identifier.empty()) {
                identifier[at] = bytes.number();
            }
            break;
        }
    }
    return identifier;
}

void checkGet(const Instances &instances, const Variable &variable)
{
    if (instances.has(variable.asked)) {
        require(variable.status == Status::ok, "a get finds every instance");
    } else if (!isLenient(variable.asked)) {
        require(variable.status ==
                    (instances.hasObjectOf(variable.asked) ? Status::noSuchInstance : Status::noSuchObject),
                "a get finds nothing but instances");
    }
}

void checkGetNext(const Instances &instances, const Variable &variable, OidView region)
{
    // Before the region, its root may be an instance itself.
    const bool mayBeRoot = std::is_lt(compare(variable.asked, region)) && instances.has(region);
    const Identifier *const after = mayBeRoot ? nullptr : instances.after(variable.asked, region);
    const OidView expected = mayBeRoot ? region : after ? OidView(*after) : OidView();
    if (expected.empty()) {
        require(variable.status == Status::endOfRegion, "behind the last instance the region ends");
        return;
    }
    require(variable.status == Status::ok, "a get-next finds what follows");
    require(std::is_gt(compare(variable.name.view(), variable.asked)), "what follows is greater");
    require(std::is_eq(compare(variable.name.view(), expected)), "what follows is the next instance");
}

void checkFoundAgain(Resolver &resolver, std::span<const Variable> found)
{
    for (const Variable &next : found) {
        if (next.status != Status::ok) {
            continue;
        }
        Variable again;
        again.asked = next.name.view();
        resolver.get({&again, 1});
        require(again.status == Status::ok, "a get finds what a get-next found");
        require(again.value.type == next.value.type && again.value.number == next.value.number,
                "a get finds the value that a get-next found");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Resolver resolver(*Registry::ofProcess().trees().front().root,
                             Registry::ofProcess().callbacks().front().callback, noComplaint);
    Bytes bytes({data, size});
    const Instances &instances = useDevice(bytes.below(16));
    const Identifier region = bytes.below(2) == 0 ? Identifier{1} : readIdentifier(bytes, instances);
    std::vector<Identifier> packet;
    for (std::uint32_t count = bytes.below(6) + 1; count > 0; --count) {
        packet.push_back(readIdentifier(bytes, instances));
    }
    std::vector<Variable> variables(packet.size());
    const auto forEach = [&](auto check) { std::for_each(variables.begin(), variables.end(), check); };
    for (std::size_t i = 0; i < packet.size(); ++i) {
        variables[i].asked = packet[i];
    }

    resolver.get(variables);
    forEach([&](const Variable &variable) { checkGet(instances, variable); });
    resolver.getNext(variables, region);
    forEach([&](const Variable &variable) { checkGetNext(instances, variable, region); });
    checkFoundAgain(resolver, variables);

    require(ipmib::scripted::complaints().empty() && ipmib::scripted::openIterators() == 0,
            "the module keeps its promises");
    return 0;
}
