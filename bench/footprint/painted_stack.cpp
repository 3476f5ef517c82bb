// SPDX-License-Identifier: BSD-3-Clause
// How much stack a call takes: it runs on a stack of its own that was painted before.
#include "painted_stack.h"

#include <ucontext.h>

#include <algorithm>
#include <cstdint>

namespace
{

constexpr std::uint8_t paint = 0xA5;
alignas(64) std::uint8_t stack[64 * 1024];

ucontext_t caller;
ucontext_t callee;
const std::function<void()> *pending = nullptr;
const std::uint8_t *lowest = nullptr; // that is no longer painted

// Looks before the way back, which may take more stack than the call. In place: a call would leave its own mark.
void run()
{
    (*pending)();
    for (lowest = stack; *lowest == paint; ++lowest) {
    }
}

std::size_t deepest(const std::function<void()> &call)
{
    std::fill(std::begin(stack), std::end(stack), paint);
    pending = &call;
    getcontext(&callee);
    callee.uc_stack.ss_sp = stack;
    callee.uc_stack.ss_size = sizeof stack;
    callee.uc_link = &caller;
    makecontext(&callee, run, 0);
    swapcontext(&caller, &callee);
    return static_cast<std::size_t>(std::end(stack) - lowest);
}

} // namespace

std::size_t stackOf(const std::function<void()> &call)
{
    static const std::size_t ofNothing = deepest([] {});
    return deepest(call) - ofNothing;
}
