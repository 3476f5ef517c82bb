// SPDX-License-Identifier: BSD-3-Clause
// A source with a device's recorded objects over it: they win, and what the device lacks is not there.
#pragma once

#include "source.h"

#include <ipmib/platform_recorded.h>

#include <vector>

namespace ipmib::host
{

class RecordedOver final : public Source
{
  public:
    // The source, which may be null when there are recorded objects alone, outlives this one and is told of packets by
    // whoever owns it.
    RecordedOver(Source *source, const IpmibRecordedHooks &recorded) : source_(source), recorded_(recorded) {}

    std::vector<Oid> objects() const override;
    void start() override;
    bool areRead() const override { return source_ == nullptr || source_->areRead(); }
    void get(std::span<Variable> variables) override;
    void getNext(std::span<Variable> variables, OidView region) override;
    bool lowestBehind(OidView asked, Oid &lowest) override;

  private:
    bool isPlain() const { return source_ != nullptr && recorded_.any() == 0; }
    // What the source has that the device does not lack.
    void askForTheRest(std::span<Variable> variables, OidView region);
    void takeRecorded(Variable &variable, OidView region);

    Source *source_;
    const IpmibRecordedHooks &recorded_;
    std::vector<Variable> asked_;
    std::vector<Oid> places_; // that are asked for
};

} // namespace ipmib::host
