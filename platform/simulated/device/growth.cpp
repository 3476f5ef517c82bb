// SPDX-License-Identifier: BSD-3-Clause
// Sums of rates over time. Where a sum has no exact form in whole numbers it is calculated at the points of a grid and
// runs straight between them: rounding then never makes it fall.
#include "device/growth.h"

#include "device/random.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ipmib::simulated
{
namespace
{

constexpr double fastest = 1e12;              // a second
constexpr double wrap = 0x1p64;               // where a counter begins anew
constexpr double longestPeriod = 31 * 86'400; // seconds; what is counted in it is less than `wrap`
constexpr std::uint64_t grid = 288;           // points; five minutes of a day
constexpr std::size_t mostShapes = 16;        // of one counter
constexpr double mostInStep = 1e18;           // counts

std::uint64_t wrapped(double counts)
{
    return static_cast<std::uint64_t>(std::fmod(counts, wrap));
}

std::uint64_t evenly(double rate, Time time)
{
    return wrapped(rate * static_cast<double>(time) / msPerSecond);
}

// The sine of so many turns, by its series, of which what is left out is below the last digit: the same on every
// processor. (Of one of PowerPC the C library takes instructions for it that emulated ones do not have.)
double sine(double turns)
{
    turns -= std::floor(turns); // into the first of them, and from there into the quarters next to 0
    if (turns > 0.75) {
        turns -= 1;
    } else if (turns > 0.25) {
        turns = 0.5 - turns;
    }
    constexpr int lastPower = 23;
    const double angle = 2 * std::numbers::pi * turns;
    double sum = 0;
    for (int power = lastPower; power >= 1; power -= 2) {
        sum = 1 - angle * angle / ((power + 1) * (power + 2)) * sum;
    }
    return angle * sum;
}

// `sumAt(part)` is what has been counted in a part, from 0 to 1, of a length of time.
template <class SumAt>
double onGrid(Time time, Time length, SumAt sumAt)
{
    const std::uint64_t point = time * grid / length;
    const double before = sumAt(static_cast<double>(point) / grid);
    const double behind = sumAt(static_cast<double>(point + 1) / grid);
    const double part = static_cast<double>(time * grid % length) / static_cast<double>(length);
    return std::min(before + (behind - before) * part, behind);
}

double rateOf(Object &object, const char *name)
{
    return object.need(name).real(0, fastest);
}

Time lengthOf(const Value &value)
{
    constexpr double shortest = 0.001;
    value.real(shortest, longestPeriod);
    return readSeconds(value);
}

double swingOf(Object &object, double mean)
{
    const auto swing = object.find("swing");
    return swing ? swing->real(0, mean) : mean;
}

Ramp readRamp(const Value &value)
{
    Object object(value);
    Ramp ramp{rateOf(object, "from"), rateOf(object, "to"), 0, 0};
    ramp.length = lengthOf(object.need("seconds"));
    if (const auto at = object.find("at")) {
        ramp.at = readSeconds(*at);
    }
    object.finish();
    return ramp;
}

Wave readWave(const Value &value)
{
    constexpr Time day = 86'400'000;
    Object object(value);
    Wave wave{rateOf(object, "mean"), 0, day, 0};
    wave.swing = swingOf(object, wave.mean);
    if (const auto period = object.find("period")) {
        wave.period = lengthOf(*period);
    }
    wave.peak = wave.period / 2;
    if (const auto peak = object.find("peak")) {
        wave.peak = readSeconds(*peak) % wave.period;
    }
    object.finish();
    return wave;
}

Noise readNoise(const Value &value)
{
    Object object(value);
    Noise noise{0, 0, msPerSecond, 0};
    const Value meanValue = object.need("mean");
    const double mean = meanValue.real(0, fastest);
    const double swing = swingOf(object, mean);
    if (const auto step = object.find("step")) {
        noise.step = lengthOf(*step);
    }
    if (const auto seed = object.find("seed")) {
        noise.seed = seed->number(0, UINT32_MAX);
    }
    object.finish();
    const double seconds = static_cast<double>(noise.step) / msPerSecond;
    if (mean * seconds < 1 || mean * seconds > mostInStep) {
        meanValue.fail("there must be at least one count in a step, and at most 1e18");
    }
    noise.mean = static_cast<std::uint64_t>(mean * seconds);
    noise.swing = std::min(static_cast<std::uint64_t>(swing * seconds), noise.mean);
    return noise;
}

Burst readBurst(const Value &value)
{
    Object object(value);
    Burst burst{rateOf(object, "rate"), Schedule::read(object.need("times"))};
    object.finish();
    return burst;
}

} // namespace

std::uint64_t Ramp::after(Time time) const
{
    if (time <= at) {
        return evenly(from, time);
    }
    const double seconds = static_cast<double>(length) / msPerSecond;
    const auto sumAt = [&](double part) { return seconds * part * (from + (to - from) * part / 2); };
    const Time within = std::min(time - at, length);
    const double climbed = within == length ? sumAt(1) : onGrid(within, length, sumAt);
    return evenly(from, at) + wrapped(climbed) + evenly(to, time - at - within);
}

std::uint64_t Wave::after(Time time) const
{
    const double seconds = static_cast<double>(period) / msPerSecond;
    const double begin = static_cast<double>(peak) / static_cast<double>(period);
    const auto sumAt = [&](double part) {
        return seconds * (mean * part + swing / (2 * std::numbers::pi) * (sine(part - begin) + sine(begin)));
    };
    const auto inPeriod = static_cast<std::uint64_t>(mean * seconds);
    const double begun = std::max(onGrid(time % period, period, sumAt), 0.0);
    return time / period * inPeriod + std::min(static_cast<std::uint64_t>(begun), inPeriod);
}

// The end of each step is shifted by a random part of a step's counts, so a step has as many more as its end is shifted
// further than its beginning. The sum over all steps is then known without adding them up.
std::uint64_t Noise::shiftAt(std::uint64_t number) const
{
    return static_cast<std::uint64_t>(static_cast<double>(swing) * fractionOf(seed ^ mixed(number)));
}

std::uint64_t Noise::after(Time time) const
{
    const std::uint64_t number = time / step;
    const std::uint64_t shift = shiftAt(number);
    const std::uint64_t inStep = mean + shiftAt(number + 1) - shift;
    const double part = static_cast<double>(time % step) / static_cast<double>(step);
    const auto begun = static_cast<std::uint64_t>(static_cast<double>(inStep) * part);
    return number * mean + shift - shiftAt(0) + std::min(begun, inStep);
}

std::uint64_t Burst::after(Time time) const
{
    return evenly(rate, times.coveredBefore(time));
}

Growth Growth::read(const Value &value)
{
    Growth growth;
    std::vector<Shape> shapes;
    const auto readOne = [&](const Value &each) {
        if (!each.isObject()) {
            growth.rate_ += each.real(0, fastest);
            return;
        }
        Object object(each);
        const std::size_t before = shapes.size();
        const auto readShape = [&](const char *name, auto read) {
            if (const auto shape = object.find(name)) {
                shapes.push_back(read(*shape));
            }
        };
        readShape("ramp", readRamp);
        readShape("day", readWave);
        readShape("noise", readNoise);
        readShape("burst", readBurst);
        object.finish();
        if (shapes.size() != before + 1) {
            each.refuse("a rate: a number, \"ramp\", \"day\", \"noise\" or \"burst\"");
        }
        if (shapes.size() > mostShapes) {
            each.fail("a counter has at most " + std::to_string(mostShapes) + " shapes");
        }
    };
    if (value.isList()) {
        value.each(readOne);
    } else {
        readOne(value);
    }
    if (!shapes.empty()) {
        growth.shapes_ = std::make_shared<const std::vector<Shape>>(std::move(shapes));
    }
    return growth;
}

std::uint64_t Growth::after(Time time) const
{
    std::uint64_t counts = evenly(rate_, time);
    if (shapes_ != nullptr) {
        for (const Shape &shape : *shapes_) {
            counts += std::visit([time](const auto &each) { return each.after(time); }, shape);
        }
    }
    return counts;
}

} // namespace ipmib::simulated
