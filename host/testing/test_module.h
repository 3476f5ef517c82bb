// SPDX-License-Identifier: BSD-3-Clause
// A module whose answers a test writes.
#pragma once

#include <ipmib/message.h>

#include <functional>
#include <utility>

namespace ipmib::host::testing
{

// While it lives, requests to `callback` are answered by its handler. A module's callback carries no state, so there is
// one at a time.
class TestModule
{
  public:
    using Handler = std::function<std::uint32_t(MorRequest *, MorReply *)>;

    explicit TestModule(Handler handler) : handler_(std::move(handler)) { current_ = this; }
    ~TestModule() { current_ = nullptr; }
    TestModule(const TestModule &) = delete;
    TestModule &operator=(const TestModule &) = delete;

    static std::uint32_t callback(MorRequest *request, MorReply *reply) { return current_->handler_(request, reply); }

  private:
    static inline TestModule *current_ = nullptr;
    Handler handler_;
};

// Sets an error for the whole request and returns it, as modules do.
inline std::uint32_t fail(MorReply *reply, std::uint32_t code)
{
    MOR_SetMsgError(reply, code, IPMIB_WHOLE_REQUEST);
    return code;
}

inline std::uint32_t append(MorReply *reply, std::uint32_t parameter, std::uint32_t type, std::uint32_t number)
{
    return MOR_AppendPara2Msg(reply, 0, parameter, type, number, 4);
}

} // namespace ipmib::host::testing
