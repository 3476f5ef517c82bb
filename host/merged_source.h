// SPDX-License-Identifier: BSD-3-Clause
// One table, or one scalar, of several sources: rows of each, or columns of one row from each.
#pragma once

#include "byte_store.h"
#include "source.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ipmib::host
{

class MergedSource final : public Source
{
  public:
    // What lies below the root, of sources that outlive this one. Of an instance that several have, the first one's
    // value counts.
    MergedSource(OidView root, std::vector<Source *> sources);

    std::vector<Oid> objects() const override;
    void start() override;
    bool areRead() const override;
    // The sources are told by whoever owns them.
    void beginPacket() override { ++packet_; }
    // What is known of one instance's rows does not hold for another's.
    void select(std::size_t) override { ++packet_; }
    void get(std::span<Variable> variables) override;
    void getNext(std::span<Variable> variables, OidView region) override;

  private:
    // A source has nothing behind `from` and in front of `to`, or up to the end of the region: it said so, or gave an
    // answer that another source had a smaller one for. Good for the packet.
    struct Gap {
        std::uint64_t packet = 0;
        bool toEnd = false;
        std::vector<SubId> from;
        std::vector<SubId> to;
    };
    struct Part {
        Source *source;
        std::vector<Oid> objects; // below the root, ascending
        std::vector<Gap> gaps;    // one for each column
        std::vector<Variable> asked;
        std::vector<std::size_t> variables; // whose they are
    };
    // What is known of a variable's answer.
    struct Search {
        static constexpr std::size_t none = SIZE_MAX;
        std::size_t next = none;  // the part to be asked
        std::size_t found = none; // the part that has the smallest instance so far
        std::uint64_t asked = 0;  // the parts that were, a bit each
    };

    void chooseNext(const Variable &variable, Search &search);
    void ask(std::size_t part, std::span<Variable> variables, OidView region);
    void take(std::size_t part, Variable &variable, Search &search, const Variable &answer);
    Gap &gapOf(Part &part, OidView asked);
    bool isInGap(const Gap &gap, OidView asked) const;
    std::optional<OidView> lowestOfPart(std::size_t part, OidView asked);
    void remember(std::size_t part, OidView asked, const Oid *next);

    Oid root_;
    std::vector<Part> parts_;
    std::vector<Search> searches_; // of the packet's variables
    ByteStore store_;
    std::uint64_t packet_ = 1;
    Oid region_; // for which the gaps hold
    Oid lowest_;
};

} // namespace ipmib::host
