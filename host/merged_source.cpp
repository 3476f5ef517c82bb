// SPDX-License-Identifier: BSD-3-Clause
// The successor is the smallest of the sources' answers. A source that has nothing up to some identifier, as far as is
// known, is not asked while others have something in front of it: a walk through the rows of one source asks only that.
#include "merged_source.h"

#include <algorithm>

namespace ipmib::host
{
namespace
{

// Of the same instance the first source's value counts.
bool isInFront(OidView left, std::size_t leftPart, OidView right, std::size_t rightPart)
{
    const auto order = compare(left, right);
    return std::is_lt(order) || (std::is_eq(order) && leftPart < rightPart);
}

} // namespace

MergedSource::MergedSource(OidView root, std::vector<Source *> sources) : root_(root)
{
    SubId lastColumn = 0;
    for (Source *source : sources) {
        Part &part = parts_.emplace_back(Part{source, source->objects(), {}, {}, {}});
        std::erase_if(part.objects, [this](const Oid &object) { return !isWithin(object.view(), root_.view()); });
    }
    for (const Oid &object : objects()) {
        if (object.size() > root_.size()) {
            lastColumn = std::max(lastColumn, object.view()[root_.size()]);
        }
    }
    for (Part &part : parts_) {
        part.gaps.resize(std::size_t{lastColumn} + 1);
    }
}

std::vector<Oid> MergedSource::objects() const
{
    std::vector<Oid> names;
    for (const Part &part : parts_) {
        names.insert(names.end(), part.objects.begin(), part.objects.end());
    }
    std::ranges::sort(names,
                      [](const Oid &left, const Oid &right) { return std::is_lt(compare(left.view(), right.view())); });
    const auto isSame = [](const Oid &left, const Oid &right) { return std::ranges::equal(left.view(), right.view()); };
    names.erase(std::unique(names.begin(), names.end(), isSame), names.end());
    return names;
}

void MergedSource::start()
{
    for (const Part &part : parts_) {
        part.source->start();
    }
}

bool MergedSource::areRead() const
{
    return std::ranges::all_of(parts_, [](const Part &part) { return part.source->areRead(); });
}

void MergedSource::get(std::span<Variable> variables)
{
    for (Variable &variable : variables) {
        variable.status = Status::noSuchObject;
    }
    for (Part &part : parts_) {
        part.variables.clear();
        for (std::size_t i = 0; i < variables.size(); ++i) {
            const Status status = variables[i].status;
            if (isWithin(variables[i].asked, root_.view()) &&
                (status == Status::noSuchObject || status == Status::noSuchInstance)) {
                part.variables.push_back(i);
            }
        }
        if (part.variables.empty()) {
            continue;
        }
        part.asked.resize(std::max(part.asked.size(), part.variables.size()));
        const std::span<Variable> batch(part.asked.data(), part.variables.size());
        for (std::size_t i = 0; i < batch.size(); ++i) {
            batch[i].asked = variables[part.variables[i]].asked;
        }
        part.source->get(batch);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            Variable &variable = variables[part.variables[i]];
            if (batch[i].status != Status::noSuchObject) {
                variable.status = batch[i].status;
                variable.value = batch[i].value;
            }
        }
    }
}

void MergedSource::getNext(std::span<Variable> variables, OidView region)
{
    store_.clear();
    searches_.assign(variables.size(), {});
    for (Variable &variable : variables) {
        variable.status = Status::endOfRegion;
    }
    const OidView within = region.size() > root_.size() ? region : root_.view();
    if (!isWithin(within, region) || !isWithin(within, root_.view())) {
        return;
    }
    if (!std::ranges::equal(within, region_.view())) {
        region_.assign(within);
        ++packet_; // forgets the gaps
    }
    for (;;) {
        bool isDone = true;
        for (std::size_t i = 0; i < variables.size(); ++i) {
            chooseNext(variables[i], searches_[i]);
            isDone = isDone && searches_[i].next == Search::none;
        }
        if (isDone) {
            return;
        }
        for (std::size_t part = 0; part < parts_.size(); ++part) {
            ask(part, variables, within);
        }
    }
}

// The one that may have the smallest instance, unless a smaller one is found.
void MergedSource::chooseNext(const Variable &variable, Search &search)
{
    search.next = Search::none;
    if (variable.status == Status::genErr) {
        return;
    }
    const auto isAsked = [&search](std::size_t part) { return (search.asked >> part & 1) != 0; };
    if (search.found == Search::none) {
        std::size_t unknown = 0;
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            if (!isAsked(i) && !isInGap(gapOf(parts_[i], variable.asked), variable.asked)) {
                ++unknown;
                search.next = i;
            }
        }
        if (unknown == 1) {
            return; // it comes first, or hardly ever not
        }
        search.next = Search::none;
    }
    OidView nearest;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        const auto lowest = isAsked(i) ? std::nullopt : lowestOfPart(i, variable.asked);
        if (lowest && (search.next == Search::none || std::is_lt(compare(*lowest, nearest))) &&
            (search.found == Search::none || isInFront(*lowest, i, variable.name.view(), search.found))) {
            nearest = *lowest;
            search.next = i;
        }
    }
}

// Nothing when the source has none.
std::optional<OidView> MergedSource::lowestOfPart(std::size_t part, OidView asked)
{
    const Gap &gap = gapOf(parts_[part], asked);
    if (!isInGap(gap, asked)) {
        if (!parts_[part].source->lowestBehind(asked, lowest_)) {
            remember(part, asked, nullptr);
        } else if (std::ranges::equal(lowest_.view(), asked)) {
            return asked;
        } else {
            remember(part, asked, &lowest_);
        }
    }
    return gap.toEnd ? std::nullopt : std::optional<OidView>(gap.to);
}

void MergedSource::ask(std::size_t number, std::span<Variable> variables, OidView region)
{
    Part &part = parts_[number];
    part.variables.clear();
    for (std::size_t i = 0; i < variables.size(); ++i) {
        if (searches_[i].next == number) {
            part.variables.push_back(i);
        }
    }
    if (part.variables.empty()) {
        return;
    }
    part.asked.resize(std::max(part.asked.size(), part.variables.size()));
    const std::span<Variable> batch(part.asked.data(), part.variables.size());
    for (std::size_t i = 0; i < batch.size(); ++i) {
        batch[i].asked = variables[part.variables[i]].asked;
    }
    part.source->getNext(batch, region);
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const std::size_t at = part.variables[i];
        take(number, variables[at], searches_[at], batch[i]);
    }
}

void MergedSource::take(std::size_t part, Variable &variable, Search &search, const Variable &answer)
{
    search.asked |= std::uint64_t{1} << part;
    if (variable.status == Status::genErr || answer.status != Status::ok) {
        if (answer.status == Status::endOfRegion) {
            remember(part, variable.asked, nullptr);
        } else {
            variable.status = Status::genErr; // what the source has in front of the others' is not known
        }
        return;
    }
    if (search.found != Search::none) {
        if (!isInFront(answer.name.view(), part, variable.name.view(), search.found)) {
            remember(part, variable.asked, &answer.name);
            return;
        }
        remember(search.found, variable.asked, &variable.name);
    }
    search.found = part;
    variable.status = Status::ok;
    variable.name.assign(answer.name.view());
    variable.value = kept(answer.value, store_); // its source may be asked again for this packet
}

MergedSource::Gap &MergedSource::gapOf(Part &part, OidView asked)
{
    const SubId column = asked.size() > root_.size() ? asked[root_.size()] : 0;
    return part.gaps[column < part.gaps.size() ? column : 0];
}

bool MergedSource::isInGap(const Gap &gap, OidView asked) const
{
    return gap.packet == packet_ && std::is_gteq(compare(asked, gap.from)) &&
           (gap.toEnd || std::is_lt(compare(asked, gap.to)));
}

void MergedSource::remember(std::size_t part, OidView asked, const Oid *next)
{
    Gap &gap = gapOf(parts_[part], asked);
    gap.packet = packet_;
    gap.toEnd = next == nullptr;
    gap.from.assign(asked.begin(), asked.end());
    if (next != nullptr) {
        gap.to.assign(next->view().begin(), next->view().end());
    }
}

} // namespace ipmib::host
