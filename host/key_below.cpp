// SPDX-License-Identifier: BSD-3-Clause
// Counts down in instance order: the last part that can be lowered is, and what stands behind it becomes as great as it
// can be.
#include "key_below.h"

#include <algorithm>

namespace ipmib::host
{
namespace
{

class Builder
{
  public:
    Builder(const IndexParts &parts, RowKey &key) : parts_(parts), key_(key) {}

    bool build(OidView instance, bool smaller)
    {
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            const auto finished = parts_[i].isOctets ? takeOctets(i, instance) : takeNumber(i, instance);
            if (finished != Step::next) {
                return finished == Step::found;
            }
        }
        return !smaller || !instance.empty() || belowPart(parts_.size() - 1);
    }

    bool buildBelowOctets(OidView instance)
    {
        if (std::ranges::none_of(parts_, &IndexPart::isOctets)) {
            return false;
        }
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            const auto finished = parts_[i].isOctets ? step(belowAll(i)) : takeNumber(i, instance);
            if (finished != Step::next) {
                return finished == Step::found;
            }
        }
        return false;
    }

  private:
    enum class Step { next, found, none };

    static Step step(bool found) { return found ? Step::found : Step::none; }

    // Below every key that begins with the parts before i.
    bool belowAll(std::size_t i)
    {
        if (i == 0) {
            return false;
        }
        if (!parts_[i].isOctets && parts_[i].low > 0) {
            key_.setNumber(i, parts_[i].low - 1); // no row has it
            return raise(i + 1);
        }
        return belowPart(i - 1);
    }

    // Below every key that begins with the parts up to and including i.
    bool belowPart(std::size_t i)
    {
        if (parts_[i].isOctets) {
            return belowOctets(i, key_.number(i), key_.number(i));
        }
        if (key_.number(i) > parts_[i].low) {
            key_.setNumber(i, key_.number(i) - 1);
            return raise(i + 1);
        }
        return belowAll(i);
    }

    // Below octets of this length, of which the first `known` ones are set.
    bool belowOctets(std::size_t i, std::uint32_t length, std::size_t known)
    {
        const auto octets = key_.resizeOctets(i, length);
        while (known > 0 && octets[known - 1] == 0) {
            --known;
        }
        if (known > 0) {
            --octets[known - 1];
            std::fill(octets.begin() + static_cast<std::ptrdiff_t>(known), octets.end(), UINT8_MAX);
            return raise(i + 1);
        }
        if (length > parts_[i].low) {
            std::ranges::fill(key_.resizeOctets(i, length - 1), UINT8_MAX);
            return raise(i + 1);
        }
        return belowAll(i);
    }

    // The parts from i on become as great as they can be.
    bool raise(std::size_t i)
    {
        for (; i < parts_.size(); ++i) {
            if (parts_[i].isOctets) {
                std::ranges::fill(key_.resizeOctets(i, parts_[i].high), UINT8_MAX);
            } else {
                key_.setNumber(i, isBesideOctets(i) ? parts_[i].low - 1 : parts_[i].high);
            }
        }
        return true;
    }

    bool isBesideOctets(std::size_t i) const
    {
        return parts_[i].low > 0 && std::any_of(parts_.begin(), parts_.begin() + static_cast<std::ptrdiff_t>(i),
                                                [](const IndexPart &part) { return part.isOctets; });
    }

    Step takeNumber(std::size_t i, OidView &instance)
    {
        const IndexPart &part = parts_[i];
        if (instance.empty() || instance.front() < part.low) {
            return step(belowAll(i));
        }
        if (isBesideOctets(i)) {
            return step(raise(i));
        }
        key_.setNumber(i, std::min(instance.front(), part.high));
        if (instance.front() > part.high) {
            return step(raise(i + 1));
        }
        instance = instance.subspan(1);
        return Step::next;
    }

    Step takeOctets(std::size_t i, OidView &instance)
    {
        const IndexPart &part = parts_[i];
        SubId length = part.low;
        if (!part.hasFixedLength) {
            if (instance.empty() || instance.front() < part.low) {
                return step(belowAll(i));
            }
            length = instance.front();
            instance = instance.subspan(1);
        }
        if (length > part.high) {
            return step(raise(i));
        }
        const auto octets = key_.resizeOctets(i, length);
        for (std::size_t known = 0; known < octets.size(); ++known) {
            if (instance.empty()) {
                return step(belowOctets(i, length, known));
            }
            if (instance.front() > UINT8_MAX) {
                std::fill(octets.begin() + static_cast<std::ptrdiff_t>(known), octets.end(), UINT8_MAX);
                return step(raise(i + 1));
            }
            octets[known] = static_cast<std::uint8_t>(instance.front());
            instance = instance.subspan(1);
        }
        return Step::next;
    }

    const IndexParts &parts_;
    RowKey &key_;
};

} // namespace

bool keyBelow(const IndexParts &parts, OidView instance, bool smaller, RowKey &key)
{
    return Builder(parts, key).build(instance, smaller);
}

bool keyBelowOctets(const IndexParts &parts, OidView instance, RowKey &key)
{
    return Builder(parts, key).buildBelowOctets(instance);
}

} // namespace ipmib::host
