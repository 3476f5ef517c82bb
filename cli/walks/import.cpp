// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl import: a walk of a device becomes a scenario. What the model of a device can say is said there; whatever a
// walk of that model would have otherwise is told as a recorded object, or as one that the device lacks.
#include "commands.h"
#include "output.h"
#include "walks/differences.h"
#include "walks/model.h"

#include "support/named_file.h"
#include "support/printable.h"
#include "support/walk/snmprec.h"
#include "support/walk/walk_text.h"

#include <nlohmann/json.hpp>

#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace ipmib::cli
{
namespace
{

using Json = nlohmann::ordered_json;

constexpr std::size_t largestWalk = 64 * 1'048'576;
constexpr std::chrono::seconds pipePatience(60);

support::Walk readWalk(const std::string &path)
{
    const support::NamedFile file = support::readNamedFile(path, largestWalk, pipePatience);
    if (file.error != 0) {
        throw std::runtime_error(path + ": cannot read it: " + file.reason);
    }
    try {
        return support::parseWalk(file.text);
    } catch (const support::WalkError &error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

// A scenario in memory, for the simulated platform of this process.
class ScenarioInMemory
{
  public:
    ScenarioInMemory() : descriptor_(memfd_create("scenario", MFD_CLOEXEC)) { write("{}"); }
    ~ScenarioInMemory() { close(descriptor_); }
    ScenarioInMemory(const ScenarioInMemory &) = delete;
    ScenarioInMemory &operator=(const ScenarioInMemory &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    void write(const std::string &text) const
    {
        std::size_t written = 0;
        bool isGood = descriptor_ >= 0 && ftruncate(descriptor_, 0) == 0;
        while (isGood && written < text.size()) {
            const ssize_t more =
                pwrite(descriptor_, text.data() + written, text.size() - written, static_cast<off_t>(written));
            isGood = more > 0;
            written += isGood ? static_cast<std::size_t>(more) : 0;
        }
        if (!isGood) {
            throw std::runtime_error(std::string("cannot write the scenario: ") + std::strerror(errno));
        }
    }

  private:
    int descriptor_;
};

host::PluginOptions simulated(host::PluginOptions options, const std::string &path)
{
    options.platform = "simulated:" + path;
    options.platformOptions = {{"at", "0"}};
    return options;
}

constexpr std::size_t shownOfEach = 3;

// "other MIBs, served as recorded: 12 (1.3.6.1, ...)"
template <class Items, class Text>
void tell(const char *what, std::size_t count, const Items &items, Text text)
{
    if (items.empty()) {
        return;
    }
    std::string line = std::string(what) + ": " + std::to_string(count) + " (";
    for (std::size_t i = 0; i < std::min(items.size(), shownOfEach); ++i) {
        line += (i == 0 ? "" : ", ") + text(items[i]);
    }
    complain(line + (items.size() > shownOfEach ? ", ...)" : ")"));
}

void report(const support::Walk &walk, const Differences &differences)
{
    const auto name = [](const RecordedObject &object) { return support::identifierText(object.name); };
    const std::size_t recorded = differences.unknown.size() + differences.differing.size();
    complain("objects of the walk: " + std::to_string(walk.objects.size()) +
             "; that the scenario has by its model: " + std::to_string(walk.objects.size() - recorded));
    tell("left out, since they have no value that can be served", walk.leftOut.size(), walk.leftOut,
         [](const std::string &line) { return line; });
    if (walk.hinted != 0) {
        complain("strings without quotes, taken as they are printed: " + std::to_string(walk.hinted) +
                 "; snmpwalk -On -Ox prints their octets");
    }
    tell("of other MIBs, served as recorded", differences.unknown.size(), differences.unknown, name);
    tell("not in the model or otherwise there, served as recorded", differences.differing.size(), differences.differing,
         name);
    tell("in the model and not in the walk, not served", differences.lackingInstances, differences.lacking,
         [](const auto &root) { return support::identifierText(root); });
}

void addRecorded(const Differences &differences, Json &scenario)
{
    Recording objects = differences.unknown;
    objects.insert(objects.end(), differences.differing.begin(), differences.differing.end());
    std::ranges::sort(objects, support::isInFront, &RecordedObject::name);
    if (!differences.lacking.empty()) {
        Json &lacking = scenario["lacking"] = Json::array();
        for (const auto &root : differences.lacking) {
            lacking.push_back(support::identifierText(root));
        }
    }
    if (!objects.empty()) {
        Json &lines = scenario["objects"] = Json::array();
        for (const RecordedObject &object : objects) {
            lines.push_back(support::snmprecLine(object));
        }
    }
}

} // namespace

int importWalk(const Options &options, const Words &words)
{
    if (words.size() != 1) {
        throw host::UsageError("import: name the file of one walk");
    }
    const support::Walk walk = readWalk(words.front());
    const ScenarioInMemory file;
    LocalDevice device(simulated(options.plugin, file.path()));
    Json scenario = modelOf(walk.objects, device.tree());
    file.write(scenario.dump());
    device.reload();
    const Differences differences = differencesOf(walk.objects, recordingOf(device), device.tree());
    addRecorded(differences, scenario);
    std::printf("%s\n", scenario.dump(2).c_str());
    report(walk, differences);
    return host::exitSuccess;
}

} // namespace ipmib::cli
