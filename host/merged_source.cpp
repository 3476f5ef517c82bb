// SPDX-License-Identifier: BSD-3-Clause
// The successor is the smallest of the sources' answers. A source that is known to have nothing up to some identifier
// is not asked while others have something in front of it, so a walk through the rows of one source asks only that.
#include "merged_source.h"

#include <algorithm>

namespace ipmib::host
{

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

// One that nothing is known of, or else the one that may have the smallest instance, unless a smaller one is found.
void MergedSource::chooseNext(const Variable &variable, Search &search)
{
    search.next = Search::none;
    if (variable.status == Status::genErr) {
        return;
    }
    const Gap *nearest = nullptr;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        if ((search.asked >> i & 1) != 0) {
            continue;
        }
        const Gap &gap = gapOf(parts_[i], variable.asked);
        if (!isInGap(gap, variable.asked) && !passesOver(i, variable.asked)) {
            search.next = i;
            return;
        }
        const bool mayCount = !gap.toEnd && (nearest == nullptr || std::is_lt(compare(gap.to, nearest->to))) &&
                              (search.found == Search::none || std::is_lteq(compare(gap.to, variable.name.view())));
        if (mayCount) {
            nearest = &gap;
            search.next = i;
        }
    }
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
        const auto order = compare(answer.name.view(), variable.name.view());
        if (std::is_gt(order) || (std::is_eq(order) && part > search.found)) {
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

// Whether the source has no such column: its next one is all that it can answer with, and mostly too far behind.
bool MergedSource::passesOver(std::size_t part, OidView asked)
{
    const std::vector<Oid> &objects = parts_[part].objects;
    const auto behind = std::ranges::partition_point(
        objects, [asked](const Oid &object) { return std::is_lteq(compare(object.view(), asked)); });
    if (behind != objects.begin() && isWithin(asked, std::prev(behind)->view())) {
        return false;
    }
    remember(part, asked, behind == objects.end() ? nullptr : &*behind);
    return true;
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
