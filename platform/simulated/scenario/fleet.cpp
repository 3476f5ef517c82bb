// SPDX-License-Identifier: BSD-3-Clause
// An entry is kept as a document; a device is made of a copy in which the texts are its own.
#include "scenario/fleet.h"

#include "scenario/read.h"

#include <nlohmann/json.hpp>

#include <charconv>

namespace ipmib::simulated
{
namespace
{

constexpr std::size_t longestName = 32; // of a context
constexpr std::uint32_t mostDevices = 65'536;
constexpr std::uint32_t largestNumber = 1'000'000'000;

void vary(Json &json, std::uint32_t n)
{
    if (json.is_string()) {
        auto &text = json.get_ref<std::string &>();
        if (text.find('{') != std::string::npos) {
            text = varied(text, n);
        }
    } else if (json.is_structured()) {
        for (Json &each : json) {
            vary(each, n);
        }
    }
}

// The term behind "{n", which ends in front of "}".
std::uint64_t valueOf(std::string_view term, std::uint32_t n)
{
    if (term.empty()) {
        return n;
    }
    std::uint32_t operand = 0;
    const auto [end, error] = std::from_chars(term.data() + 1, term.data() + term.size(), operand);
    const bool isNumber = error == std::errc() && end == term.data() + term.size();
    if (isNumber && term.front() == '+') {
        return std::uint64_t{n} + operand;
    }
    if (isNumber && operand != 0 && term.front() == '/') {
        return n / operand;
    }
    if (isNumber && operand != 0 && term.front() == '%') {
        return n % operand;
    }
    throw ScenarioError("\"{n" + std::string(term) + "}\" is none of {n}, {n+NUMBER}, {n/NUMBER} and {n%NUMBER}");
}

} // namespace

std::string varied(const std::string &text, std::uint32_t n)
{
    constexpr std::string_view mark = "{n";
    std::string result;
    std::size_t from = 0;
    for (;;) {
        const std::size_t begin = text.find(mark, from);
        const std::size_t end = begin == std::string::npos ? begin : text.find('}', begin);
        if (end == std::string::npos) {
            return result + text.substr(from);
        }
        const std::size_t term = begin + mark.size();
        result += text.substr(from, begin - from);
        result += std::to_string(valueOf(std::string_view(text).substr(term, end - term), n));
        from = end + 1;
    }
}

void Fleet::read(const Value &devices, const std::string &folder)
{
    devices.each([&](const Value &entry) { readEntry(entry, folder); });
}

void Fleet::readEntry(const Value &value, const std::string &folder)
{
    Object object(value);
    const Value name = object.need("name");
    const std::string &pattern = name.text("the name of a device");
    const bool varies = object.find("count").has_value();
    const std::uint32_t count = object.number("count", 1, 1, mostDevices);
    const std::uint32_t first = object.number("first", 1, 0, largestNumber);
    const Value scenario = object.need("scenario");
    const std::optional<Value> listen = object.find("listen");
    const std::string address = listen ? listen->text("an address to listen at") : "";
    object.finish();
    if (!scenario.isText() && !scenario.isObject()) {
        scenario.refuse("a scenario or the name of its file");
    }

    Entry entry{nullptr, scenario.place(), varies};
    if (scenario.isText()) {
        const std::string &path = scenario.text();
        entry.where = path.front() == '/' ? path : folder + path;
        try {
            entry.scenario = std::make_shared<const Json>(readJsonFile(entry.where));
        } catch (const ScenarioError &error) {
            scenario.fail(entry.where + ": " + error.what());
        }
    } else {
        entry.scenario = std::make_shared<const Json>(scenario.json());
    }
    entries_.push_back(entry);
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto variation = [&](const std::string &text, const Value &source) {
            try {
                return varies ? varied(text, first + i) : text;
            } catch (const ScenarioError &error) {
                source.fail(error.what());
            }
        };
        std::string own = variation(pattern, name);
        if (own.size() > longestName) {
            name.fail("\"" + own + "\" is longer than a context's name can be, " + std::to_string(longestName));
        }
        if (!byName_.emplace(own, devices_.size()).second) {
            name.fail("another device has the name \"" + own + "\"");
        }
        devices_.push_back({std::move(own), entries_.size() - 1, first + i, listen ? variation(address, *listen) : ""});
        if (devices_.size() > mostDevices) {
            name.fail("there are more than " + std::to_string(mostDevices) + " devices");
        }
    }
    make(devices_.size() - count);
}

std::optional<std::size_t> Fleet::find(const std::string &name) const
{
    const auto found = byName_.find(name);
    return found == byName_.end() ? std::nullopt : std::optional(found->second);
}

Device Fleet::make(std::size_t place) const
{
    const Member &member = devices_[place];
    const Entry &entry = entries_[member.entry];
    try {
        if (!entry.varies) {
            return readDevice(*entry.scenario, 0);
        }
        Json own = *entry.scenario;
        vary(own, member.number);
        return readDevice(own, member.number);
    } catch (const ScenarioError &error) {
        throw ScenarioError("device \"" + member.name + "\": " + entry.where + ": " + error.what());
    }
}

} // namespace ipmib::simulated
