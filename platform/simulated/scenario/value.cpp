// SPDX-License-Identifier: BSD-3-Clause
// Values of a scenario file together with the place where they stand.
#include "scenario/value.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace ipmib::simulated
{
namespace
{

constexpr std::size_t longestQuote = 60; // of a value that is shown

std::string quoted(const Json &json)
{
    std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > longestQuote) {
        text.resize(longestQuote - 3);
        text += "...";
    }
    return text;
}

// "a", "a or b", "a, b or c"
template <class Words>
std::string enumerated(const Words &words)
{
    std::string text;
    std::size_t left = words.size();
    for (const auto &word : words) {
        text += word;
        --left;
        text += left == 0 ? "" : left == 1 ? " or " : ", ";
    }
    return text;
}

std::string shownNumber(double number)
{
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

} // namespace

std::string Value::place() const
{
    if (whole_ == nullptr) {
        return "";
    }
    const std::string before = whole_->place();
    if (whole_->json_.is_array()) {
        return before + "[" + std::to_string(index_) + "]";
    }
    return before + (before.empty() ? "" : ".") + std::string(key_);
}

void Value::fail(const std::string &what) const
{
    const std::string where = place();
    throw ScenarioError(where.empty() ? what : where + ": " + what);
}

void Value::refuse(const std::string &expected) const
{
    fail(quoted(json_) + " is not " + expected);
}

bool Value::isText() const
{
    return json_.is_string();
}

bool Value::isNumber() const
{
    return json_.is_number();
}

bool Value::isObject() const
{
    return json_.is_object();
}

bool Value::isList() const
{
    return json_.is_array();
}

bool Value::boolean() const
{
    if (!json_.is_boolean()) {
        refuse("true or false");
    }
    return json_.get<bool>();
}

std::uint64_t Value::number(std::uint64_t low, std::uint64_t high) const
{
    const bool natural = json_.is_number_unsigned() || (json_.is_number_integer() && json_.get<std::int64_t>() >= 0);
    if (!natural || json_.get<std::uint64_t>() < low || json_.get<std::uint64_t>() > high) {
        refuse("a number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return json_.get<std::uint64_t>();
}

double Value::real(double low, double high) const
{
    if (!json_.is_number() || !(json_.get<double>() >= low) || !(json_.get<double>() <= high)) {
        refuse("a number from " + shownNumber(low) + " to " + shownNumber(high));
    }
    return json_.get<double>();
}

const std::string &Value::text(const char *expected) const
{
    if (!json_.is_string() || json_.get_ref<const std::string &>().empty()) {
        refuse(expected);
    }
    return json_.get_ref<const std::string &>();
}

std::uint32_t Value::word(std::span<const Word> words) const
{
    if (json_.is_string()) {
        for (const Word &word : words) {
            if (word.text == json_.get_ref<const std::string &>()) {
                return word.code;
            }
        }
    }
    std::vector<std::string> texts;
    for (const Word &word : words) {
        texts.push_back(quoted(word.text));
    }
    refuse(enumerated(texts));
}

std::size_t Value::listSize() const
{
    if (!json_.is_array()) {
        refuse("a list");
    }
    return json_.size();
}

const Json &Value::item(std::size_t i) const
{
    return json_[i];
}

Object::Object(const Value &value) : value_(value)
{
    if (!value.json_.is_object()) {
        value.refuse("an object");
    }
}

std::optional<Value> Object::find(std::string_view name)
{
    known_.emplace(name);
    const auto member = value_.json_.find(name);
    if (member == value_.json_.end()) {
        return std::nullopt;
    }
    return Value(*member, value_, std::string_view(member.key()));
}

Value Object::need(std::string_view name)
{
    const auto member = find(name);
    if (!member) {
        value_.fail("\"" + std::string(name) + "\" is missing");
    }
    return *member;
}

bool Object::boolean(std::string_view name, bool otherwise)
{
    const auto member = find(name);
    return member ? member->boolean() : otherwise;
}

std::uint32_t Object::number(std::string_view name, std::uint32_t otherwise, std::uint32_t low, std::uint32_t high)
{
    const auto member = find(name);
    return member ? static_cast<std::uint32_t>(member->number(low, high)) : otherwise;
}

std::uint32_t Object::word(std::string_view name, std::uint32_t otherwise, std::span<const Word> words)
{
    const auto member = find(name);
    return member ? member->word(words) : otherwise;
}

std::vector<std::string> Object::names() const
{
    std::vector<std::string> names;
    for (const auto &member : value_.json_.items()) {
        names.push_back(member.key());
    }
    return names;
}

void Object::finish() const
{
    for (const std::string &name : names()) {
        if (known_.count(name) == 0) {
            const auto member = value_.json_.find(name);
            Value(*member, value_, std::string_view(name)).fail("unknown key; expected " + enumerated(known_));
        }
    }
}

} // namespace ipmib::simulated
