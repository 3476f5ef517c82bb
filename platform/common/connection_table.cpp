// SPDX-License-Identifier: BSD-3-Clause
// Connections between IpmibConnectionKey and the small rows that they are kept as.
#include "connection_table.h"

#include <ipmib/big_endian.h>

#include <algorithm>
#include <cstring>

namespace ipmib::platform
{
namespace
{

constexpr std::size_t ipv4Size = 4;
constexpr std::size_t ipv6Size = 16;
constexpr std::size_t zoneSize = 4;
constexpr unsigned sizeBits = 5;
constexpr unsigned ipv4InUpperBits = 32;
constexpr std::size_t rowsOfPiece = 1'000; // some tens of microseconds

constexpr std::uint8_t packed(std::uint32_t type, std::size_t size)
{
    return static_cast<std::uint8_t>(type << sizeBits | size);
}

// A row with this key.
ConnectionRow rowOf(const IpmibConnectionKey &key)
{
    ConnectionRow row;
    row.local = PackedEnd::of(key.local);
    row.remote = PackedEnd::of(key.remote);
    row.instance = key.instance;
    return row;
}

bool answer(const ConnectionRow *from, IpmibConnection &row)
{
    if (from == nullptr) {
        return false;
    }
    from->local.copyTo(row.key.local);
    from->remote.copyTo(row.key.remote);
    row.key.instance = from->instance;
    row.state = from->state;
    row.process = from->process;
    return true;
}

} // namespace

PackedEnd PackedEnd::ipv4(std::uint32_t address, std::uint16_t port)
{
    return {{std::uint64_t{address} << ipv4InUpperBits, 0}, 0, port, packed(IPMIB_END_IPV4, ipv4Size)};
}

PackedEnd PackedEnd::ipv6(const PackedAddress &address, std::uint32_t zone, std::uint16_t port)
{
    const std::uint8_t kind =
        zone != 0 ? packed(IPMIB_END_IPV6Z, ipv6Size + zoneSize) : packed(IPMIB_END_IPV6, ipv6Size);
    return {address, zone, port, kind};
}

PackedEnd PackedEnd::of(const IpmibEnd &end)
{
    const std::size_t size = std::min<std::size_t>(end.size, sizeof end.octets);
    std::uint8_t octets[sizeof end.octets] = {};
    std::copy_n(end.octets, size, octets);
    IpmibBe32 zone;
    std::memcpy(&zone, octets + ipv6Size, sizeof zone);
    return {PackedAddress::of(octets), ipmib_be32_get(zone), static_cast<std::uint16_t>(end.port),
            packed(end.type, size)};
}

void PackedEnd::copyTo(IpmibEnd &end) const
{
    const IpmibBe32 bigEndianZone = ipmib_be32(zone);
    end.type = typeAndSize >> sizeBits;
    end.size = typeAndSize & ((1u << sizeBits) - 1);
    address.copyTo(end.octets);
    std::memcpy(end.octets + ipv6Size, &bigEndianZone, sizeof bigEndianZone);
    end.port = port;
}

std::strong_ordering operator<=>(const PackedEnd &a, const PackedEnd &b)
{
    if (a.typeAndSize != b.typeAndSize) {
        return a.typeAndSize <=> b.typeAndSize;
    }
    if (a.address != b.address) {
        return a.address <=> b.address;
    }
    return a.zone != b.zone ? a.zone <=> b.zone : a.port <=> b.port;
}

bool ConnectionTable::Less::operator()(const ConnectionRow &a, const ConnectionRow &b) const
{
    auto order = a.local <=> b.local;
    if (order == 0) {
        order = a.remote <=> b.remote;
    }
    return order == 0 ? a.instance < b.instance : order < 0;
}

bool ConnectionTable::sweepSome(Generation generation)
{
    sweepAt_ = rows_.eraseSome(sweepAt_, rowsOfPiece,
                               [generation](const ConnectionRow &, Generation last) { return last != generation; });
    return !sweepAt_;
}

bool ConnectionTable::clearSome()
{
    sweepAt_.reset();
    rows_.eraseSome(std::nullopt, rowsOfPiece, [](const ConnectionRow &, Generation) { return true; });
    if (!rows_.empty()) {
        return false;
    }
    rows_ = {}; // the room for pointers to chunks, too
    return true;
}

bool ConnectionTable::find(const IpmibConnectionKey &key, IpmibConnection &row) const
{
    return answer(rows_.find(rowOf(key)), row);
}

bool ConnectionTable::next(const IpmibConnectionKey &key, IpmibConnection &row) const
{
    return answer(rows_.after(rowOf(key)), row);
}

} // namespace ipmib::platform
