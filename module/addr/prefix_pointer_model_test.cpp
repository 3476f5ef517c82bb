// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefix on random devices, odd and failing ones among them, against a plain walk of the whole prefix table
// over the same data: it names the first row that fits there, and none when the walk meets none.
// PREFIX_POINTER_REQUESTS=900000 in the environment asks so many requests.
#include "ip_address_test.h"

#include <algorithm>
#include <cstdlib>
#include <random>

namespace ipmib::scripted::prefix_pointer_model
{
using namespace ip_address;

namespace
{

using Octets = std::array<std::uint8_t, 16>;

// A row of the prefix table: what of it a pointer and the walk look at.
struct Row {
    std::uint32_t interface;
    Octets address;
    std::uint32_t length;

    bool isLinkLocal() const { return address[0] == 0xFE && (address[1] & 0xC0) == 0x80; }
    bool operator==(const Row &) const = default;
};

class Device
{
  public:
    explicit Device(std::mt19937 &random) : random_(random)
    {
        const std::uint32_t interfaces = below(7);
        for (std::uint32_t each = 0; each < interfaces; ++each) {
            const std::uint32_t interface = 1 + below(12);
            if (std::find(walk_.begin(), walk_.end(), interface) == walk_.end()) {
                walk_.push_back(interface);
            }
        }
        if (!oneIn(8)) {
            std::sort(walk_.begin(), walk_.end());
        }
        for (std::uint32_t interface = 0; interface <= 13; ++interface) {
            fill(interface);
        }
    }

    // The interface that the walk visits behind a given one; from one that it does not visit, the next greater one.
    std::uint32_t interfaceAfter(std::uint32_t interface) const
    {
        auto at = std::find(walk_.begin(), walk_.end(), interface);
        at = at != walk_.end() ? at + 1
                               : std::find_if(walk_.begin(), walk_.end(), [&](auto each) { return each > interface; });
        return at == walk_.end() ? 0 : *at;
    }

    const FullPrefixRecord *prefixAfter(std::uint32_t interface, const FullPrefixRecord *key) const
    {
        const Prefixes &prefixes = prefixes_[interface];
        if (key == nullptr) {
            return prefixes.firstFails || prefixes.records.empty() ? nullptr : prefixes.records.data();
        }
        for (std::size_t place = 0; place < prefixes.records.size(); ++place) {
            if (rowOf(prefixes.records[place]) == rowOf(*key)) {
                return place + 1 < std::min(prefixes.records.size(), prefixes.failsFrom) ? &prefixes.records[place + 1]
                                                                                         : nullptr;
            }
        }
        return nullptr;
    }

    bool hasLinkLocal(std::uint32_t interface) const { return prefixes_[interface].linkLocal; }

    // An address that often lies in one of the prefixes.
    FullAddressRecord someAddress()
    {
        const bool visited = !walk_.empty() && !oneIn(4);
        FullAddressRecord record = address(visited ? walk_[below(walk_.size())] : below(14), "::");
        const Row row = {record.if_index, someBytes(), someLength()};
        std::copy(row.address.begin(), row.address.end(), record.address);
        record.prefix_length = row.length;
        const Prefixes &prefixes = prefixes_[record.if_index];
        if (!prefixes.records.empty() && !oneIn(4)) {
            const FullPrefixRecord &prefix = prefixes.records[below(prefixes.records.size())];
            std::copy(std::begin(prefix.prefix), std::end(prefix.prefix), record.address);
            record.address[15] |= static_cast<std::uint8_t>(below(2));
            record.prefix_length = ipmib_be32_get(prefix.length);
        }
        return record;
    }

    static Row rowOf(const FullPrefixRecord &record)
    {
        Row row = {ipmib_be32_get(record.if_index), {}, ipmib_be32_get(record.length)};
        std::copy(std::begin(record.prefix), std::end(record.prefix), row.address.begin());
        return row;
    }

    std::uint32_t below(std::size_t end) { return static_cast<std::uint32_t>(random_() % end); }
    bool oneIn(std::uint32_t number) { return below(number) == 0; }

  private:
    struct Prefixes {
        std::vector<FullPrefixRecord> records; // in the device's order
        bool firstFails = false;
        std::size_t failsFrom = SIZE_MAX;
        bool linkLocal = false;
    };

    Octets someBytes()
    {
        static constexpr Octets places[] = {{0x20, 0x01, 0x0D, 0xB8}, {0xFE, 0x80}, {0xFE, 0xBF}, {0xFE, 0xC0}, {}};
        Octets bytes = places[oneIn(2) ? 0 : below(std::size(places))];
        bytes[7] = static_cast<std::uint8_t>(below(3));
        bytes[15] = static_cast<std::uint8_t>(below(2));
        return bytes;
    }
    std::uint32_t someLength()
    {
        static constexpr std::uint32_t lengths[] = {64, 64, 64, 10, 0, 48, 63, 127, 128, 200, 0xFFFFFFFF};
        return lengths[below(std::size(lengths))];
    }

    void fill(std::uint32_t interface)
    {
        Prefixes &prefixes = prefixes_[interface];
        const std::uint32_t count = below(5);
        for (std::uint32_t each = 0; each < count; ++each) {
            FullPrefixRecord record = prefix(interface, "::", 0);
            Octets bytes = someBytes();
            if (!oneIn(4)) {
                bytes[15] = 0;
            }
            std::copy(bytes.begin(), bytes.end(), record.prefix);
            record.length = ipmib_be32(someLength());
            prefixes.records.push_back(record);
        }
        if (!oneIn(4)) {
            std::sort(prefixes.records.begin(), prefixes.records.end(), [](const auto &one, const auto &other) {
                return std::pair(rowOf(one).address, rowOf(one).length) <
                       std::pair(rowOf(other).address, rowOf(other).length);
            });
        }
        prefixes.firstFails = oneIn(16);
        prefixes.failsFrom = oneIn(16) ? below(4) : SIZE_MAX;
        prefixes.linkLocal = !oneIn(3);
    }

    std::mt19937 &random_;
    std::vector<std::uint32_t> walk_;
    Prefixes prefixes_[14];
};

// The walk of the whole table, as plainly as it can be said. It may have no end on an odd device.
class Model
{
  public:
    explicit Model(const Device &device) : device_(device) {}

    enum class End { found, none, never };
    End find(const FullAddressRecord &address, Row *found) const
    {
        std::optional<Row> row = firstBehind(0);
        for (int steps = 0; row; ++steps) {
            if (steps == patience) {
                return End::never;
            }
            if (row->interface == address.if_index && row->length == address.prefix_length &&
                row->address == masked(address)) {
                *found = *row;
                return End::found;
            }
            if (!next(&row)) {
                return End::never;
            }
        }
        return End::none;
    }

  private:
    static constexpr int patience = 200;
    static constexpr Octets linkLocalAddress = {0xFE, 0x80};

    static Octets masked(const FullAddressRecord &address)
    {
        Octets bytes = {};
        for (std::uint32_t bit = 0; bit < std::min(address.prefix_length, 128u); ++bit) {
            bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] | (address.address[bit / 8] & (0x80 >> bit % 8)));
        }
        return bytes;
    }

    std::optional<Row> linkLocalRow(std::uint32_t interface) const
    {
        return device_.hasLinkLocal(interface) ? std::optional<Row>({interface, linkLocalAddress, 10}) : std::nullopt;
    }

    std::optional<Row> firstBehind(std::uint32_t interface) const
    {
        while ((interface = device_.interfaceAfter(interface)) != 0) {
            const FullPrefixRecord *const record = device_.prefixAfter(interface, nullptr);
            const auto row = record != nullptr ? Device::rowOf(*record) : linkLocalRow(interface);
            if (row) {
                return row;
            }
        }
        return std::nullopt;
    }

    // Steps to the next row; false when the device never lets go of this one.
    bool next(std::optional<Row> *row) const
    {
        const Row key = **row;
        if (key.isLinkLocal()) { // what else the interface lists is passed over
            *row = std::pair(key.address, key.length) < std::pair(linkLocalAddress, 10u) ? linkLocalRow(key.interface)
                                                                                         : std::nullopt;
        } else {
            FullPrefixRecord cursor = {};
            cursor.if_index = ipmib_be32(key.interface);
            std::copy(key.address.begin(), key.address.end(), cursor.prefix);
            cursor.length = ipmib_be32(key.length);
            const FullPrefixRecord *const record = device_.prefixAfter(key.interface, &cursor);
            if (record != nullptr && Device::rowOf(*record) == key) {
                return false;
            }
            *row = record != nullptr ? Device::rowOf(*record) : linkLocalRow(key.interface);
        }
        if (!*row) {
            *row = firstBehind(key.interface);
        }
        return true;
    }

    const Device &device_;
};

Reply pointerTo(const std::optional<Row> &row)
{
    std::vector<std::uint32_t> identifier = {1, 3, 6, 1, 2, 1, 4, 32, 1, 5};
    if (!row) {
        identifier.insert(identifier.end(), {0, 0});
        return answered({objectId(prefixPointer, identifier)});
    }
    const bool zoned = row->isLinkLocal();
    identifier.insert(identifier.end(), {row->interface, zoned ? 4u : 2u, zoned ? 20u : 16u});
    identifier.insert(identifier.end(), row->address.begin(), row->address.end());
    if (zoned) {
        identifier.insert(identifier.end(), {0, 0, 0, row->interface});
    }
    identifier.push_back(row->length);
    return answered({objectId(prefixPointer, identifier)});
}

Reply askFor(const FullAddressRecord &record)
{
    world().addresses = {record};
    return getRow(ipv6, Bytes(record.address, record.address + 16)).want(prefixPointer).send();
}

TEST(PrefixPointerModel, OnAnyDeviceTheReplyIsThatOfAWalkOfTheWholeTable)
{
    const char *const asked = std::getenv("PREFIX_POINTER_REQUESTS");
    const long requests = asked != nullptr ? std::atol(asked) : 3000;
    std::mt19937 random(20261122);
    long found = 0;
    long none = 0;
    while (found + none < requests) {
        Device device(random);
        newWorld();
        tellCalls(false);
        world().nextInterface = [&](std::uint32_t interface) { return device.interfaceAfter(interface); };
        world().nextPrefix = [&](std::uint32_t interface, const FullPrefixRecord *key) {
            return device.prefixAfter(interface, key);
        };
        for (std::uint32_t interface = 0; interface < 14; ++interface) {
            if (device.hasLinkLocal(interface)) {
                world().linkLocal.insert(interface);
            }
        }
        for (int each = 0; each < 10; ++each) {
            const FullAddressRecord address = device.someAddress();
            Row row;
            const Model::End end = Model(device).find(address, &row);
            if (end == Model::End::never) { // there is no reply to compare with
                continue;
            }
            ++(end == Model::End::found ? found : none);
            ASSERT_EQ(askFor(address), pointerTo(end == Model::End::found ? std::optional(row) : std::nullopt));
        }
    }
    EXPECT_GT(found, requests / 10);
    EXPECT_GT(none, requests / 10);
    newWorld();
}

} // namespace
} // namespace ipmib::scripted::prefix_pointer_model
