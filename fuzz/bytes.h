// SPDX-License-Identifier: BSD-3-Clause
// The fuzzer's bytes as a stream of choices, numbers and addresses. Behind the last byte everything is 0.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace ipmib::fuzz
{

// What a target promises whatever its input is; a broken promise is a finding.
inline void require(bool holds, const char *promise)
{
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

class Bytes
{
  public:
    explicit Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool empty() const { return bytes_.empty(); }

    std::uint8_t byte()
    {
        std::uint8_t value = 0;
        copyTo(&value, 1);
        return value;
    }

    // One of `count` things.
    std::uint32_t below(std::uint32_t count) { return byte() % count; }

    // Mostly one byte, since small numbers and bounds are what counts.
    std::uint32_t number()
    {
        static constexpr std::uint32_t notable[] = {256, 300, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        constexpr std::uint8_t firstNotable = 248;
        constexpr std::uint8_t firstRaw = firstNotable + std::size(notable);
        const std::uint8_t choice = byte();
        if (choice < firstNotable) {
            return choice;
        }
        std::uint32_t raw = 0;
        if (choice >= firstRaw) {
            for (int i = 0; i < 4; ++i) { // the same number on every machine
                raw = raw << 8 | byte();
            }
        }
        return choice < firstRaw ? notable[choice - firstNotable] : raw;
    }

    // Mostly one of a few addresses, so that equal and neighbouring ones meet.
    void address(std::uint8_t *ret_address)
    {
        static constexpr std::uint8_t heads[][2] = {{0, 0},       {0x20, 1},    {0xFC, 0},    {0xFE, 0x7F},
                                                    {0xFE, 0x80}, {0xFE, 0xBF}, {0xFE, 0xC0}, {0xFF, 2}};
        const std::uint8_t choice = byte();
        if (choice >= 0xF0) {
            copyTo(ret_address, 16);
            return;
        }
        std::memset(ret_address, 0, 16);
        std::memcpy(ret_address, heads[choice % 8], 2);
        ret_address[15] = choice / 8 % 8;
    }

    std::vector<std::uint8_t> octets(std::size_t length)
    {
        std::vector<std::uint8_t> copy(length);
        copyTo(copy.data(), length);
        return copy;
    }

    // What is not there leaves zeros.
    void copyTo(void *target, std::size_t length)
    {
        if (length == 0) {
            return; // the target may be null
        }
        const std::size_t there = std::min(length, bytes_.size());
        std::memset(target, 0, length);
        std::copy_n(bytes_.data(), there, static_cast<std::uint8_t *>(target));
        bytes_ = bytes_.subspan(there);
    }

  private:
    std::span<const std::uint8_t> bytes_;
};

} // namespace ipmib::fuzz

// What libFuzzer, and the replay program, call with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
