// SPDX-License-Identifier: BSD-3-Clause
// What the platform and `ipmib-netns` say to each other: what is a question, and which files there are.
#include "namespaces/helper_protocol.h"

#include <net/if.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace ipmib::platform
{
namespace
{

constexpr std::string_view namedFolder = "/run/netns/";

bool isOneEntry(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos;
}

bool isInterfaceName(std::string_view name)
{
    return isOneEntry(name) && name.size() < IFNAMSIZ;
}

bool isNumber(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

std::string pathOfNamespace(std::string_view text)
{
    if (isNumber(text)) {
        return "/proc/" + std::string(text) + "/ns/net";
    }
    if (isOneEntry(text)) {
        return std::string(namedFolder) + std::string(text);
    }
    return text.starts_with('/') ? std::string(text) : "";
}

bool isNamed(std::string_view path)
{
    return path.starts_with(namedFolder) && isOneEntry(path.substr(namedFolder.size()));
}

std::string pathOfFile(const HelperQuestion &question)
{
    if (question.which >= std::size(networkFiles)) {
        return "";
    }
    const NetworkFile &file = networkFiles[question.which];
    const std::string_view name = question.text;
    if (file.ofInterface ? !isInterfaceName(name) : !name.empty()) {
        return "";
    }
    return std::string(file.path) + std::string(name) + std::string(file.behind);
}

std::optional<HelperQuestion> questionForFile(std::string_view path)
{
    for (std::uint32_t i = 0; i < std::size(networkFiles); ++i) {
        const NetworkFile &file = networkFiles[i];
        const std::size_t around = file.path.size() + file.behind.size();
        if (!path.starts_with(file.path) || !path.ends_with(file.behind) || path.size() < around) {
            continue;
        }
        auto question = questionWith(HelperQuestion::file, path.substr(file.path.size(), path.size() - around));
        if (question) {
            question->which = i;
            if (pathOfFile(*question) == path) {
                return question;
            }
        }
    }
    return std::nullopt;
}

std::optional<HelperQuestion> questionWith(HelperQuestion::Kind kind, std::string_view text)
{
    HelperQuestion question{};
    question.kind = kind;
    if (text.size() >= sizeof question.text || text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    std::ranges::copy(text, question.text);
    return question;
}

std::optional<HelperQuestion> readQuestion(std::span<const std::byte> message)
{
    HelperQuestion question;
    if (message.size() != sizeof question) {
        return std::nullopt;
    }
    std::memcpy(&question, message.data(), sizeof question);
    const auto end = std::ranges::find(question.text, '\0');
    const bool isKnown = question.kind >= HelperQuestion::open && question.kind <= HelperQuestion::settle;
    const bool hasEnd = end != std::end(question.text) &&
                        std::all_of(end, std::end(question.text), [](char each) { return each == '\0'; });
    return isKnown && hasEnd ? std::optional(question) : std::nullopt;
}

} // namespace ipmib::platform
