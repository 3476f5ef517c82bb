// SPDX-License-Identifier: BSD-3-Clause
// Mutates the identifiers of real instances; purely random ones would hardly ever lie near a row.
#include "identifiers.h"

#include <algorithm>

namespace ipmib::host::testing
{
namespace
{

SubId randomSubId(Random &random, SubId old)
{
    static constexpr SubId notable[] = {0,   1,   2,    3,          4,          5,          10,
                                        15,  16,  17,   20,         21,         127,        128,
                                        255, 256, 2040, 2041,       0x7FFFFFFE, 0x7FFFFFFF, 200,
                                        254, 300, 19,   0x80000000, 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFF};
    switch (random() % 4) {
    case 0:
        return old + 1;
    case 1:
        return old - 1;
    case 2:
        return static_cast<SubId>(random());
    default:
        return pick(random, notable);
    }
}

void truncate(Random &random, Identifier &identifier)
{
    identifier.resize(random() % (identifier.size() + 1));
}

void extend(Random &random, Identifier &identifier)
{
    for (std::size_t i = random() % 24 + 1; i > 0 && identifier.size() < maxOidLength; --i) {
        identifier.push_back(randomSubId(random, 0));
    }
}

void mutate(Random &random, Identifier &identifier)
{
    if (identifier.empty()) {
        return;
    }
    // Mostly within the instance, which is at the end.
    const std::size_t from = random() % 4 == 0 ? 0 : identifier.size() - std::min<std::size_t>(identifier.size(), 24);
    const std::size_t place = from + random() % (identifier.size() - from);
    identifier[place] = randomSubId(random, identifier[place]);
}

} // namespace

std::string text(OidView identifier)
{
    std::string line;
    for (const SubId id : identifier) {
        line += (line.empty() ? "" : ".") + std::to_string(id);
    }
    return line;
}

Instances::Instances(std::vector<Identifier> objects, std::vector<Identifier> instances)
    : objects_(std::move(objects)), instances_(std::move(instances))
{
    std::sort(instances_.begin(), instances_.end());
    instances_.erase(std::unique(instances_.begin(), instances_.end()), instances_.end());
}

bool Instances::has(OidView identifier) const
{
    return std::binary_search(instances_.begin(), instances_.end(), Identifier(identifier.begin(), identifier.end()));
}

bool Instances::hasObjectOf(OidView identifier) const
{
    return std::any_of(objects_.begin(), objects_.end(),
                       [identifier](const Identifier &object) { return isWithin(identifier, object); });
}

const Identifier *Instances::after(OidView asked, OidView region) const
{
    const auto isBefore = [](const Identifier &instance, OidView other) {
        return std::is_lt(compare(instance, other));
    };
    const auto isBehind = [](OidView other, const Identifier &instance) {
        return std::is_gt(compare(instance, other));
    };
    const auto found = std::max(std::lower_bound(instances_.begin(), instances_.end(), region, isBefore),
                                std::upper_bound(instances_.begin(), instances_.end(), asked, isBehind));
    return found != instances_.end() && isWithin(*found, region) ? &*found : nullptr;
}

Identifier Instances::random(Random &random) const
{
    Identifier identifier = instances_.empty() || random() % 6 == 0 ? pick(random, objects_) : pick(random, instances_);
    switch (random() % 8) {
    case 0:
        break;
    case 1:
        truncate(random, identifier);
        break;
    case 2:
        extend(random, identifier);
        break;
    case 3:
        truncate(random, identifier);
        extend(random, identifier);
        break;
    case 4:
        truncate(random, identifier);
        mutate(random, identifier);
        break;
    default:
        for (std::size_t i = random() % 3 + 1; i > 0; --i) {
            mutate(random, identifier);
        }
        break;
    }
    return identifier;
}

Identifier Instances::randomRegion(Random &random) const
{
    if (random() % 2 == 0) {
        return {1};
    }
    Identifier region = instances_.empty() || random() % 4 == 0 ? pick(random, objects_) : pick(random, instances_);
    if (random() % 4 != 0) {
        truncate(random, region);
    }
    return region;
}

} // namespace ipmib::host::testing
