// SPDX-License-Identifier: BSD-3-Clause
// Writes instances with their values, one in a line.
#include "instance.h"

#include "cell.h"
#include "identifier.h"
#include "text.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace ipmib::cli
{
namespace
{

Cell numberCell(const LocalDevice &device, const MibTreeNode &node, const host::Value &value)
{
    const std::string number = std::to_string(value.number);
    const std::string label = isInterfaceNumber(node) ? device.interfaceName(static_cast<std::uint32_t>(value.number))
                                                      : labelText(*node.pstSyntax, value.number);
    if (isInterfaceNumber(node)) {
        return {label == number ? number : label + "(" + number + ")", value.number, {}, Tone::interface};
    }
    const auto signedNumber = static_cast<std::int32_t>(value.number);
    const std::string plain = std::to_string(signedNumber);
    return label.empty() ? Cell{plain, signedNumber, {}} : Cell{label + "(" + plain + ")", label, {}};
}

// What people have written, of which the tree tells no more than that it is octets.
bool isText(const MibTreeNode &node)
{
    constexpr std::string_view endings[] = {"Descr", "Name", "Alias"};
    return std::ranges::any_of(
        endings, [name = std::string_view(node.pszName)](std::string_view ending) { return name.ends_with(ending); });
}

Cell valueCell(const LocalDevice &device, const MibTreeNode &node, const host::Value &value)
{
    constexpr std::uint64_t ticksPerSecond = 100;
    switch (value.type) {
    case host::ValueType::integer32:
        return numberCell(device, node, value);
    case host::ValueType::timeTicks:
        return {durationText(value.number / ticksPerSecond), value.number, {}};
    case host::ValueType::opaque:
    case host::ValueType::octets:
        return isText(node) ? textCell({value.octets.begin(), value.octets.end()}, Tone::plain)
                            : textCell(hexText(value.octets), Tone::linkLayer);
    case host::ValueType::ipAddress:
        return textCell(addressText(device, value.octets), toneOfAddress(value.octets));
    case host::ValueType::objectId:
        return {identifierText(device, value.objectId), numbersText(value.objectId), {}};
    case host::ValueType::unsigned32:
    case host::ValueType::counter32:
    case host::ValueType::counter64:
        break;
    }
    return {std::to_string(value.number), value.number, {}};
}

} // namespace

void InstanceWriter::add(host::OidView name, const host::Value &value)
{
    const Object *object = device_.tree().deepest(name);
    const std::string text = identifierText(device_, name);
    const Cell cell = valueCell(device_, *object->node, value);
    if (!json_) {
        std::printf("%s = %s\n", text.c_str(), palette_.painted(cell.tone, cell.text).c_str());
        return;
    }
    Json json = {{"name", text}, {"oid", numbersText(name)}, {"value", cell.json}};
    if (isInterfaceNumber(*object->node)) {
        json["interface"] = device_.interfaceName(static_cast<std::uint32_t>(value.number));
    } else if (value.type == host::ValueType::integer32 && cell.json.is_string()) {
        json["number"] = static_cast<std::int32_t>(value.number);
    }
    std::printf("%s%s", any_ ? ",\n " : "[", json.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
    any_ = true;
}

void InstanceWriter::finish()
{
    if (json_) {
        std::fputs(any_ ? "]\n" : "[]\n", stdout);
    }
}

} // namespace ipmib::cli
