// SPDX-License-Identifier: BSD-3-Clause
// Member functions as hooks of C. A record that the member fills in is a reference there and a pointer here; bool
// becomes 0 for true and -1 for false; a string, which says in one line what has failed and is empty otherwise, becomes
// the same with two more arguments, a buffer for the line and its size.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <type_traits>

namespace ipmib::platform
{

template <class Argument>
struct HookArgument {
    using Type = Argument;
    static Argument back(Argument argument) { return argument; }
};
template <class Record>
struct HookArgument<Record &> {
    using Type = Record *;
    static Record &back(Record *record) { return *record; }
};

inline int hookFailure(const std::string &line, char *error, std::size_t capacity)
{
    if (line.empty()) {
        return 0;
    }
    std::snprintf(error, capacity, "%s", line.c_str());
    return -1;
}

// `object()` answers with the object to call, or with null when there is none: then nothing is done, and the answer is
// that there is no such row, or 0.
template <auto object, auto member, class Type = decltype(member)>
struct HookCall;

template <auto object, auto member, class Result, class Object, class... Arguments>
struct HookCall<object, member, Result (Object::*)(Arguments...)> {
    using Answer = std::conditional_t<std::is_same_v<Result, bool>, int, Result>;
    static Answer function(typename HookArgument<Arguments>::Type... arguments)
    {
        auto *called = object();
        if constexpr (std::is_same_v<Result, bool>) {
            return called != nullptr && (called->*member)(HookArgument<Arguments>::back(arguments)...) ? 0 : -1;
        } else {
            return called != nullptr ? (called->*member)(HookArgument<Arguments>::back(arguments)...) : Answer{};
        }
    }
};
template <auto object, auto member, class Object, class... Arguments>
struct HookCall<object, member, std::string (Object::*)(Arguments...)> {
    static int function(typename HookArgument<Arguments>::Type... arguments, char *error, std::size_t capacity)
    {
        auto *called = object();
        return hookFailure(called != nullptr ? (called->*member)(HookArgument<Arguments>::back(arguments)...)
                                             : "the platform has not started",
                           error, capacity);
    }
};
template <auto object, auto member, class Object, class... Arguments>
struct HookCall<object, member, void (Object::*)(Arguments...)> {
    static void function(typename HookArgument<Arguments>::Type... arguments)
    {
        if (auto *called = object(); called != nullptr) {
            (called->*member)(HookArgument<Arguments>::back(arguments)...);
        }
    }
};
template <auto object, auto member, class Result, class Object, class... Arguments>
struct HookCall<object, member, Result (Object::*)(Arguments...) const>
    : HookCall<object, member, Result (Object::*)(Arguments...)> {
};

template <auto object, auto member>
constexpr auto hookCall = HookCall<object, member>::function;

} // namespace ipmib::platform
