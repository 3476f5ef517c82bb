// SPDX-License-Identifier: BSD-3-Clause
// Questions for rows that have not been read yet, or are behind what was announced when the question came: each is
// answered when they have been, or when its time is up, from what there is by then. Nobody waits for that; other
// questions are answered meanwhile.
#pragma once

#include "host/instances.h"
#include "host/source.h"

#include <chrono>
#include <functional>
#include <vector>

namespace ipmib::agent
{

class HeldQuestions
{
  public:
    // The instances of whose rows are asked; they outlive it.
    explicit HeldQuestions(host::Instances &instances) : instances_(instances) {}
    ~HeldQuestions() { setAlarm(false); }
    HeldQuestions(const HeldQuestions &) = delete;
    HeldQuestions &operator=(const HeldQuestions &) = delete;

    bool empty() const { return held_.empty(); }
    // Whether a question for these rows of the selected instance is to be held, its packet having begun: they have not
    // been read, and there is room for one more.
    bool mustWait(const host::Source &source) const { return !source.areRead() && held_.size() < most; }
    // Calls `answer` later, once, with this instance selected; before the source ends. `client` is any name for who
    // asks.
    using Answer = std::function<void(bool isWanted)>;
    void hold(const host::Source &source, std::size_t instance, Answer answer, const void *client = nullptr);
    // A client is gone: the answers to its questions are called at once, and told that nobody wants them.
    void forget(const void *client);
    // Has those for the rows of this source answered now; null stands for all sources.
    void release(const host::Source *source);
    // The same for all of an instance.
    void releaseAllOf(std::size_t instance);
    // Nobody wants the answers any more.
    void drop() { held_.clear(); }

  private:
    static constexpr std::size_t most = 1'000; // clients ask again and again
    using Clock = std::chrono::steady_clock;
    struct Held {
        const host::Source *source;
        std::size_t instance;
        Clock::time_point end;
        Answer answer;
        const void *client;
    };

    template <class Predicate>
    void releaseIf(Predicate isDue, bool isWanted = true);
    void setAlarm(bool on);

    bool isDue(const Held &held) const;

    host::Instances &instances_;
    std::vector<Held> held_;
    unsigned alarm_ = 0;
};

} // namespace ipmib::agent
