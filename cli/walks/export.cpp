// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl export: all that a device answers, as an snmprec file.
#include "commands.h"
#include "walks/recording.h"

#include "support/walk/snmprec.h"

#include <algorithm>
#include <cstdio>

namespace ipmib::cli
{
namespace
{

// A device that does not say what it is has a clock all the same.
void addUpTime(const LocalDevice &device, Recording &recording)
{
    constexpr std::uint64_t ticksPerSecond = 100;
    const auto place = placeOf(recording, sysUpTime);
    if (place == recording.end() || place->name != sysUpTime) {
        recording.insert(place,
                         {sysUpTime, support::RecordedType::timeTicks, device.uptime() * ticksPerSecond, {}, {}});
    }
}

} // namespace

int exportWalk(LocalDevice &device, const Options &, const Words &words)
{
    if (!words.empty()) {
        throw host::UsageError("export: --platform says which device, \"" + words.front() + "\" says nothing");
    }
    Recording recording = recordingOf(device);
    addUpTime(device, recording);
    for (const RecordedObject &object : recording) {
        std::printf("%s\n", support::snmprecLine(object).c_str());
    }
    return host::exitSuccess;
}

} // namespace ipmib::cli
