// SPDX-License-Identifier: BSD-3-Clause
// Object identifiers as people write them.
#include "identifier.h"

#include "near_names.h"
#include "text.h"

#include "host/command_line.h"
#include "host/row_key.h"
#include "host/syntax.h"

#include <ipmib/big_endian.h>

#include <arpa/inet.h>

#include <charconv>
#include <cstring>
#include <optional>
#include <vector>

namespace ipmib::cli
{
namespace
{

[[noreturn]] void refuse(const std::string &text, const std::string &why)
{
    throw host::UsageError(text + ": " + why);
}

std::optional<std::uint32_t> parseNumber(std::string_view text)
{
    std::uint32_t number;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

// Appends "1.3.6"; false when it is not numbers, or too many.
bool appendNumbers(std::string_view text, host::Oid &oid)
{
    for (;;) {
        const std::size_t dot = text.find('.');
        const auto number = parseNumber(text.substr(0, dot));
        if (!number || !oid.append(*number)) {
            return false;
        }
        if (dot == std::string_view::npos) {
            return true;
        }
        text.remove_prefix(dot + 1);
    }
}

// "[a][b]" taken apart; empty when it is something else.
std::vector<std::string> bracketed(std::string_view text)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = text.find(']');
        if (text.front() != '[' || end == std::string_view::npos) {
            return {};
        }
        parts.emplace_back(text.substr(1, end - 1));
        text.remove_prefix(end + 1);
    }
    return parts;
}

std::optional<std::uint32_t> readNumberPart(LocalDevice &device, const MibTreeNode &node, const std::string &text)
{
    if (const auto number = parseNumber(text)) {
        return number;
    }
    for (const MibEnumItem &label : host::labelsOf(*node.pstSyntax)) {
        if (text == label.pszLabel) {
            return static_cast<std::uint32_t>(label.lValue);
        }
    }
    return isInterfaceNumber(node) ? std::optional(device.interfaceIndex(text)) : std::nullopt;
}

// "02:00:5e:00:53:01"
bool readLinkLayerPart(std::string_view text, std::size_t part, host::RowKey &key)
{
    constexpr std::size_t perOctet = 3; // with the colon
    const std::size_t count = (text.size() + 1) / perOctet;
    if (text.size() + 1 != count * perOctet) {
        return false;
    }
    const auto octets = key.resizeOctets(part, static_cast<std::uint32_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const char *digits = text.data() + i * perOctet;
        const auto [end, error] = std::from_chars(digits, digits + 2, octets[i], 16);
        if (error != std::errc() || end != digits + 2 || (i + 1 < count && *end != ':')) {
            return false;
        }
    }
    return true;
}

bool readAddressPart(LocalDevice &device, const std::string &text, std::size_t part, host::RowKey &key)
{
    if (text.empty()) { // none, as of a next hop
        key.resizeOctets(part, 0);
        return true;
    }
    const std::size_t percent = text.find('%');
    in_addr ipv4;
    if (inet_pton(AF_INET, text.c_str(), &ipv4) == 1) {
        std::memcpy(key.resizeOctets(part, sizeof ipv4).data(), &ipv4, sizeof ipv4);
        return true;
    }
    in6_addr address;
    if (inet_pton(AF_INET6, text.substr(0, percent).c_str(), &address) != 1) {
        return readLinkLayerPart(text, part, key);
    }
    const bool zoned = percent != std::string::npos;
    const auto octets = key.resizeOctets(part, zoned ? sizeof address + sizeof(IpmibBe32) : sizeof address);
    std::memcpy(octets.data(), &address, sizeof address);
    if (zoned) {
        const IpmibBe32 zone = ipmib_be32(device.interfaceIndex(text.substr(percent + 1)));
        std::memcpy(octets.data() + sizeof address, &zone, sizeof zone);
    }
    return true;
}

std::string nearObjects(LocalDevice &device, const std::string &name)
{
    std::vector<std::string> names;
    for (const Object &object : device.tree().objects()) {
        names.emplace_back(object.node->pszName);
    }
    return didYouMean(name, names);
}

void appendIndex(LocalDevice &device, const std::string &text, const MibTreeNode &node,
                 const std::vector<std::string> &words, host::Oid &oid)
{
    if (node.pstIndex == nullptr || words.size() > node.pstIndex->ulCount) {
        refuse(text, node.pstIndex == nullptr
                         ? "the object has no index"
                         : "parts of the index: at most " + std::to_string(node.pstIndex->ulCount));
    }
    const auto columns = host::columnsOf(*node.pstIndex);
    host::IndexParts parts;
    host::RowKey key;
    for (std::size_t i = 0; i < words.size(); ++i) {
        parts.push_back(*host::indexPart(*columns[i]));
        bool read = false;
        if (parts.back().isObjectId) {
            host::Oid identifier;
            read = appendNumbers(words[i], identifier) && identifier.size() <= host::maxIndexIds;
            key.setObjectId(i, read ? identifier.view() : host::OidView());
        } else if (parts.back().isOctets) {
            read = readAddressPart(device, words[i], i, key);
        } else if (const auto number = readNumberPart(device, *columns[i], words[i])) {
            key.setNumber(i, *number);
            read = true;
        }
        if (!read) {
            refuse(text, "\"" + words[i] + "\" is no " + columns[i]->pszName);
        }
    }
    host::appendKey(parts, key, oid);
}

std::string indexText(const LocalDevice &device, const MibTreeNode &node, host::OidView instance)
{
    const auto columns = host::columnsOf(*node.pstIndex);
    host::IndexParts parts;
    for (const MibTreeNode *column : columns) {
        parts.push_back(*host::indexPart(*column));
    }
    host::RowKey key;
    if (!host::readKey(parts, instance, key)) {
        return "";
    }
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::string part;
        if (parts[i].isObjectId) {
            part = numbersText(key.objectId(i).view());
        } else if (parts[i].isOctets && key.octets(i).empty()) {
            text += "[]";
            continue;
        } else if (parts[i].isOctets) {
            part = addressText(device, key.octets(i));
        } else if (isInterfaceNumber(*columns[i])) {
            part = device.interfaceName(key.number(i));
        } else {
            part = labelText(*columns[i]->pstSyntax, key.number(i));
        }
        text += "[" + (part.empty() ? std::to_string(key.number(i)) : part) + "]";
    }
    return text;
}

} // namespace

bool isInterfaceNumber(const MibTreeNode &node)
{
    const std::string_view name = node.pszName;
    return name == "ifIndex" || name.ends_with("IfIndex");
}

host::Oid parseIdentifier(LocalDevice &device, const std::string &text)
{
    host::Oid oid;
    const std::string_view numbers = std::string_view(text).substr(text.starts_with('.') ? 1 : 0);
    if (appendNumbers(numbers, oid)) {
        return oid;
    }
    const std::size_t end = text.find_first_of(".[");
    const Object *object = device.tree().named(text.substr(0, end));
    if (object == nullptr) {
        refuse(text, "there is no such object" + nearObjects(device, text.substr(0, end)));
    }
    oid = object->oid;
    if (end == std::string::npos) {
        return oid;
    }
    const std::string_view rest = std::string_view(text).substr(end);
    const std::vector<std::string> words = bracketed(rest);
    if (!words.empty()) {
        appendIndex(device, text, *object->node, words, oid);
    } else if (rest.front() == '[' || !appendNumbers(rest.substr(1), oid)) {
        refuse(text, "an index is written .1.2 or [1][2]");
    }
    return oid;
}

std::string identifierText(const LocalDevice &device, host::OidView oid)
{
    const Object *object = device.tree().deepest(oid);
    if (object == nullptr) {
        return numbersText(oid);
    }
    const host::OidView instance = oid.subspan(object->oid.size());
    std::string text = object->node->pszName;
    if (object->node->ulKind == MIB_NODE_COLUMN && !instance.empty()) {
        const std::string index = indexText(device, *object->node, instance);
        if (!index.empty()) {
            return text + index;
        }
    }
    return text + (instance.empty() ? "" : ".") + numbersText(instance);
}

std::string numbersText(host::OidView oid)
{
    std::string text;
    for (const host::SubId id : oid) {
        text += (text.empty() ? "" : ".") + std::to_string(id);
    }
    return text;
}

} // namespace ipmib::cli
