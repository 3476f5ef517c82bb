// SPDX-License-Identifier: BSD-3-Clause
// A message is a SEQUENCE in BER, with its length in the definite form.

#include "message_boundary.h"

#include <algorithm>

namespace ipmib::agent
{

namespace
{

constexpr std::uint8_t sequence = 0x30;
constexpr std::uint8_t longForm = 0x80;

enum class Header { tooShort, broken, complete };

struct Reading {
    Header header;
    std::size_t length = 0; // of the message with its header
};

Reading read(std::span<const std::uint8_t> header)
{
    if (header[0] != sequence) {
        return {Header::broken};
    }
    if (header.size() < 2) {
        return {Header::tooShort};
    }
    if ((header[1] & longForm) == 0) {
        return {Header::complete, std::size_t{2} + header[1]};
    }
    const std::size_t octets = header[1] & ~longForm;
    if (octets == 0 || octets > MessageBoundary::headerSize - 2) {
        return {Header::broken};
    }
    if (header.size() < 2 + octets) {
        return {Header::tooShort};
    }
    std::size_t content = 0;
    for (const std::uint8_t octet : header.subspan(2, octets)) {
        content = content << 8 | octet;
    }
    return {Header::complete, 2 + octets + content};
}

} // namespace

std::size_t MessageBoundary::mayTake(std::span<const std::uint8_t> next, std::size_t longest) const
{
    if (isInside()) {
        return remaining_;
    }
    std::array<std::uint8_t, headerSize> header = header_;
    const std::size_t added = std::min(next.size(), headerSize - known_);
    std::copy_n(next.begin(), added, header.begin() + static_cast<std::ptrdiff_t>(known_));
    const Reading reading = read(std::span(header).first(known_ + added));
    switch (reading.header) {
    case Header::tooShort:
        return added;
    case Header::broken:
        return 0;
    case Header::complete:
        break;
    }
    return reading.length > longest ? 0 : reading.length - known_;
}

bool MessageBoundary::take(std::span<const std::uint8_t> octets)
{
    if (isInside()) {
        remaining_ -= octets.size();
        return !isInside();
    }
    const std::size_t added = std::min(octets.size(), headerSize - known_);
    std::copy_n(octets.begin(), added, header_.begin() + static_cast<std::ptrdiff_t>(known_));
    const Reading reading = read(std::span(header_).first(known_ + added));
    if (reading.header != Header::complete) {
        known_ += added;
        return false;
    }
    remaining_ = reading.length - known_ - octets.size();
    known_ = 0;
    return !isInside();
}

} // namespace ipmib::agent
