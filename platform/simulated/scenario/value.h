// SPDX-License-Identifier: BSD-3-Clause
// Values of a scenario file together with the place where they stand, so that whatever is wrong with one is said as
// "interfaces[2].mtu: "abc" is not a number from 68 to 65535".
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::simulated
{

using Json = nlohmann::json;

// One line: the place, what is wrong there, and what was expected.
struct ScenarioError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A word of the file and what it stands for.
struct Word {
    const char *text;
    std::uint32_t code;
};

// The value at one place. It refers to the value that it is part of, which must live as long.
class Value
{
  public:
    explicit Value(const Json &json) : json_(json) {}
    Value(const Json &json, const Value &whole, std::string_view key) : json_(json), whole_(&whole), key_(key) {}
    Value(const Json &json, const Value &whole, std::size_t index) : json_(json), whole_(&whole), index_(index) {}

    // "interfaces[2].mtu"
    std::string place() const;
    // Throw ScenarioError: the second with the value in front.
    [[noreturn]] void fail(const std::string &what) const;
    [[noreturn]] void refuse(const std::string &expected) const;

    // The value itself, as it stands in the file.
    const Json &json() const { return json_; }

    bool isText() const;
    bool isNumber() const;
    bool isObject() const;
    bool isList() const;

    bool boolean() const;
    std::uint64_t number(std::uint64_t low, std::uint64_t high) const;
    double real(double low, double high) const;
    const std::string &text(const char *expected = "a text") const;
    std::uint32_t word(std::span<const Word> words) const;

    // Calls visit(value) for each value of a list.
    template <class Visit>
    void each(Visit visit) const
    {
        for (std::size_t i = 0; i < listSize(); ++i) {
            visit(Value(item(i), *this, i));
        }
    }

  private:
    friend class Object;

    std::size_t listSize() const;
    const Json &item(std::size_t i) const;

    const Json &json_;
    const Value *whole_ = nullptr;
    std::string_view key_; // of an object; else the value stands in a list
    std::size_t index_ = 0;
};

// A value with named members. Which names it knows is what it is asked for before finish().
class Object
{
  public:
    explicit Object(const Value &value);

    std::optional<Value> find(std::string_view name);
    Value need(std::string_view name);

    // Members with a default.
    bool boolean(std::string_view name, bool otherwise);
    std::uint32_t number(std::string_view name, std::uint32_t otherwise, std::uint32_t low, std::uint32_t high);
    std::uint32_t word(std::string_view name, std::uint32_t otherwise, std::span<const Word> words);

    // Calls visit(name, value) for each member, whatever its name.
    template <class Visit>
    void each(Visit visit)
    {
        for (const std::string &name : names()) {
            visit(name, *find(name));
        }
    }

    // Refuses members that have not been asked for.
    void finish() const;

    const Value &value() const { return value_; }

  private:
    std::vector<std::string> names() const;

    const Value &value_;
    std::set<std::string, std::less<>> known_;
};

} // namespace ipmib::simulated
