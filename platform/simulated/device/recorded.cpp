// SPDX-License-Identifier: BSD-3-Clause
// What a device answers as it was recorded from another.
#include "device/recorded.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

bool isLess(Recorded::Name left, Recorded::Name right)
{
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
}

bool beginsWith(Recorded::Name name, Recorded::Name root)
{
    return name.size() >= root.size() && std::equal(root.begin(), root.end(), name.begin());
}

} // namespace

Recorded::Piece Recorded::keep(Name ids)
{
    const auto begin = static_cast<std::uint32_t>(ids_.size());
    ids_.insert(ids_.end(), ids.begin(), ids.end());
    return {begin, static_cast<std::uint32_t>(ids.size())};
}

void Recorded::add(const support::RecordedObject &object)
{
    const Piece octets{static_cast<std::uint32_t>(octets_.size()), static_cast<std::uint32_t>(object.octets.size())};
    octets_ += object.octets;
    entries_.push_back(
        {keep(object.name), octets, keep(object.objectId), static_cast<std::uint32_t>(object.type), object.number});
}

void Recorded::lack(Name root)
{
    lacking_.push_back(keep(root));
}

std::vector<std::uint32_t> Recorded::complete()
{
    const auto isBefore = [this](const Piece &left, const Piece &right) { return isLess(ids(left), ids(right)); };
    std::ranges::sort(lacking_, isBefore);
    const auto isWithin = [this](const Piece &root, const Piece &piece) { return beginsWith(ids(piece), ids(root)); };
    lacking_.erase(std::unique(lacking_.begin(), lacking_.end(), isWithin), lacking_.end());
    std::ranges::sort(entries_, isBefore, &Entry::name);
    const auto haveOneName = [this](const Entry &left, const Entry &right) {
        return std::ranges::equal(ids(left.name), ids(right.name));
    };
    const auto twice = std::ranges::adjacent_find(entries_, haveOneName);
    const Name name = twice == entries_.end() ? Name() : ids(twice->name);
    return {name.begin(), name.end()};
}

bool Recorded::isInFront(const Piece &left, Name right) const
{
    return isLess(ids(left), right);
}

bool Recorded::find(const std::uint32_t *name, std::size_t length, IpmibRecordedObject &object) const
{
    const Name wanted(name, length);
    const auto found = std::lower_bound(entries_.begin(), entries_.end(), wanted,
                                        [this](const Entry &entry, Name id) { return isInFront(entry.name, id); });
    if (found == entries_.end() || !std::ranges::equal(ids(found->name), wanted)) {
        return false;
    }
    describe(*found, object);
    return true;
}

bool Recorded::next(const std::uint32_t *name, std::size_t length, IpmibRecordedObject &object) const
{
    const auto behind = std::upper_bound(entries_.begin(), entries_.end(), Name(name, length),
                                         [this](Name id, const Entry &entry) { return isLess(id, ids(entry.name)); });
    if (behind == entries_.end()) {
        return false;
    }
    describe(*behind, object);
    return true;
}

std::size_t Recorded::lacks(const std::uint32_t *name, std::size_t length) const
{
    const Name wanted(name, length);
    const auto behind = std::upper_bound(lacking_.begin(), lacking_.end(), wanted,
                                         [this](Name id, const Piece &root) { return isLess(id, ids(root)); });
    if (behind == lacking_.begin() || !beginsWith(wanted, ids(*std::prev(behind)))) {
        return 0;
    }
    return std::prev(behind)->size;
}

void Recorded::describe(const Entry &entry, IpmibRecordedObject &object) const
{
    object = {};
    object.name = ids_.data() + entry.name.begin;
    object.name_length = entry.name.size;
    object.type = entry.type;
    object.number = entry.number;
    object.octets = reinterpret_cast<const std::uint8_t *>(octets_.data()) + entry.octets.begin;
    object.octet_count = entry.octets.size;
    object.object_id = ids_.data() + entry.objectId.begin;
    object.object_id_length = entry.objectId.size;
}

} // namespace ipmib::simulated
