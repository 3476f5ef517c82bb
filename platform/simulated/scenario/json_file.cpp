// SPDX-License-Identifier: BSD-3-Clause
// A JSON file as a document.
#include "scenario/read.h"

#include "support/named_file.h"

#include <nlohmann/json.hpp>

#include <set>
#include <string_view>
#include <vector>

namespace ipmib::simulated
{
namespace
{

constexpr std::size_t largestFile = 64 * 1'048'576;
constexpr int deepest = 64;
constexpr std::chrono::seconds pipePatience(10); // for what a program writes to /dev/stdin

// The library keeps the last of several equal keys and says nothing.
class DuplicateKeys
{
  public:
    bool operator()(int, Json::parse_event_t event, Json &value)
    {
        if (event == Json::parse_event_t::object_start) {
            open_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            open_.pop_back();
        } else if (event == Json::parse_event_t::key && !open_.back().insert(value.get<std::string>()).second) {
            throw ScenarioError("the key " + value.dump(-1, ' ', false, Json::error_handler_t::replace) +
                                " stands twice in one object");
        }
        return true;
    }

  private:
    std::vector<std::set<std::string>> open_;
};

// The library's messages read "[json.exception.parse_error.101] parse error at line 3, column 5: ...", and where a
// number is too large for any type "[json.exception.out_of_range.406] number overflow parsing '1e999'".
std::string withoutLibraryWords(std::string message)
{
    for (const std::string mark : {"] ", "parse error at "}) {
        const auto at = message.find(mark);
        message.erase(0, at == std::string::npos ? 0 : at + mark.size());
    }
    return message;
}

} // namespace

Json readJsonFile(const std::string &path)
{
    const support::NamedFile file = support::readNamedFile(path, largestFile, pipePatience);
    if (file.error != 0) {
        throw ScenarioError("cannot read it: " + file.reason);
    }
    return readJson(file.text);
}

Json readJson(std::string_view text)
{
    try {
        DuplicateKeys duplicates;
        return Json::parse(text, [&duplicates](int depth, Json::parse_event_t event, Json &value) {
            if (depth > deepest) { // what shows a value shows it recursively
                throw ScenarioError("it is nested more than " + std::to_string(deepest) + " deep");
            }
            return duplicates(depth, event, value);
        });
    } catch (const Json::exception &error) {
        throw ScenarioError(withoutLibraryWords(error.what()));
    }
}

} // namespace ipmib::simulated
