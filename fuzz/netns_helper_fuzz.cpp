// SPDX-License-Identifier: BSD-3-Clause
// What ipmib-netns takes for a question: whatever the message is, a file is one of the listed ones, or one of a single
// interface in a listed folder, and a namespace is where its kind of name says.
#include "bytes.h"

#include "namespaces/helper_protocol.h"

using namespace ipmib::fuzz;
using namespace ipmib::platform;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<std::uint8_t> message(data, data + size); // exactly as long, so that a sanitizer sees beyond it
    const auto question = readQuestion(std::as_bytes(std::span(message)));
    if (!question) {
        return 0;
    }
    require(size == sizeof(HelperQuestion), "a question has one size");
    const std::string text = question->text;
    const std::string file = pathOfFile(*question);
    if (!file.empty()) {
        require(file.starts_with("/proc/"), "files lie in /proc");
        require(file.find("..") == std::string::npos || text.find("..") != std::string::npos, "and lead nowhere else");
        require(file.find("/../") == std::string::npos && !file.ends_with("/.."), "and lead nowhere else");
        const auto again = questionForFile(file);
        require(again && again->which == question->which && again->text == text, "a path has one question");
    }
    const std::string space = pathOfNamespace(text);
    require(space.empty() || space.starts_with('/'), "a namespace has an absolute path");
    if (isNamed(space)) {
        require(space.find('/', std::string("/run/netns/").size()) == std::string::npos, "a name is in its folder");
        require(!space.ends_with("/.."), "a name is in its folder");
    }
    return 0;
}
