// SPDX-License-Identifier: BSD-3-Clause
// Places that an identifier does without hold 0 in an index, so that indexes compare as their identifiers do.
#include "row_index.h"

#include <algorithm>
#include <array>

namespace ipmib::host
{
namespace
{

// Goes over the places of an index from the first one on, and knows which of them its identifier has.
class Places
{
  public:
    explicit Places(IndexShape shape) : shape_(shape) {}

    bool isPresent(std::size_t place) const { return place < absentFrom_ || place >= absentTo_; }
    // What stands at the place is known.
    void pass(std::size_t place, SubId number)
    {
        if (shape_[place].isLength) {
            absentFrom_ = place + 1 + number;
            absentTo_ = place + 1 + shape_[place].high;
        }
    }

  private:
    IndexShape shape_;
    std::size_t absentFrom_ = 0;
    std::size_t absentTo_ = 0;
};

// From a place on, as great as can be.
void raise(IndexShape shape, std::size_t from, std::span<SubId> index)
{
    Places places(shape);
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (i >= from) {
            index[i] = places.isPresent(i) ? shape[i].high : 0;
        }
        places.pass(i, index[i]);
    }
}

// The greatest index below all that begin with what stands in front of this place.
bool lower(IndexShape shape, std::size_t place, std::span<SubId> index)
{
    while (place > 0) {
        --place;
        if (index[place] > shape[place].low) {
            --index[place];
            raise(shape, place + 1, index);
            return true;
        }
    }
    return false;
}

} // namespace

bool readIndex(IndexShape shape, OidView instance, std::span<SubId> index)
{
    Places places(shape);
    for (std::size_t i = 0; i < shape.size(); ++i) {
        index[i] = 0;
        if (!places.isPresent(i)) {
            continue;
        }
        if (instance.empty() || instance.front() < shape[i].low || instance.front() > shape[i].high) {
            return false;
        }
        index[i] = instance.front();
        places.pass(i, index[i]);
        instance = instance.subspan(1);
    }
    return instance.empty();
}

bool indexBelow(IndexShape shape, OidView instance, bool smaller, std::span<SubId> index)
{
    Places places(shape);
    for (std::size_t i = 0; i < shape.size(); ++i) {
        index[i] = 0;
        if (!places.isPresent(i)) {
            continue;
        }
        if (instance.empty() || instance.front() < shape[i].low) {
            return lower(shape, i, index);
        }
        if (instance.front() > shape[i].high) {
            raise(shape, i, index);
            return true;
        }
        index[i] = instance.front();
        places.pass(i, index[i]);
        instance = instance.subspan(1);
    }
    return !smaller || !instance.empty() || lower(shape, shape.size(), index);
}

bool appendLowestBehind(IndexShape shape, OidView instance, Oid &name)
{
    std::array<SubId, maxIndexPlaces> begin; // what the instance has in common with indexes
    std::array<SubId, maxIndexPlaces> high;
    std::size_t size = 0;
    Places places(shape);
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (!places.isPresent(i)) {
            continue;
        }
        if (instance.empty() || instance.front() < shape[i].low) {
            return name.append(OidView(begin).first(size)) && name.append(shape[i].low);
        }
        if (instance.front() > shape[i].high) {
            break;
        }
        begin[size] = instance.front();
        high[size++] = shape[i].high;
        places.pass(i, instance.front());
        instance = instance.subspan(1);
    }
    while (size > 0 && begin[size - 1] == high[size - 1]) {
        --size;
    }
    return size > 0 && name.append(OidView(begin).first(size - 1)) && name.append(begin[size - 1] + 1);
}

bool appendIndex(IndexShape shape, OidView index, Oid &name)
{
    Places places(shape);
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (places.isPresent(i) && !name.append(index[i])) {
            return false;
        }
        places.pass(i, index[i]);
    }
    return true;
}

} // namespace ipmib::host
