// SPDX-License-Identifier: BSD-3-Clause
// An ordered set of rows for tables of a few to a million of them: a sorted sequence of sorted chunks.
//
// Compared with a tree of nodes it costs no allocation and no pointers for each row, and the next row is mostly the
// next one in memory. Lookups are two binary searches, or none where a walk goes on: each begins where the last one
// ended. A change moves at most one chunk's rows.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace ipmib::platform
{

// For rows that are read anew from time to time while they are in use: each reading has a number that differs from
// those of the readings before it, and rows that the last one has not put are swept out.
using Generation = std::uint8_t;

// Less orders rows, and rows and keys: less(row, row), less(row, key), less(key, row). A pointer to a row is good until
// the table changes.
template <class Row, class Less, std::size_t ChunkBytes = 4096>
class OrderedTable
{
    static_assert(std::is_trivially_copyable_v<Row>, "rows are moved as plain memory");

  public:
    static constexpr std::size_t capacity =
        std::max<std::size_t>(8, (ChunkBytes - sizeof(std::size_t)) / (sizeof(Row) + sizeof(Generation)));

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    void clear()
    {
        chunks_.clear();
        size_ = 0;
        last_ = {};
    }

    void swap(OrderedTable &other)
    {
        chunks_.swap(other.chunks_);
        std::swap(size_, other.size_);
        std::swap(last_, other.last_);
    }

    const Row *first() const { return chunks_.empty() ? nullptr : &chunks_.front()->rows[0]; }

    // The row that equals the key.
    template <class Key>
    const Row *find(const Key &key) const
    {
        if (last_.row != nullptr && !less_(*last_.row, key) && !less_(key, *last_.row)) {
            return last_.row;
        }
        const Row *row = atOrAfter(key);
        return row != nullptr && !less_(key, *row) ? row : nullptr;
    }

    // The row that the last lookup found, and the one behind it, which is then the last one found; null when that is
    // not known without a search.
    const Row *last() const { return last_.row; }
    const Row *behindLast() const { return last_.row + 1 != last_.end ? ++last_.row : nullptr; }

    // For fields that the order does not look at.
    template <class Key>
    Row *findToChange(const Key &key)
    {
        return const_cast<Row *>(std::as_const(*this).find(key));
    }

    // The first row that is not less than the key.
    template <class Key>
    const Row *atOrAfter(const Key &key) const
    {
        return seek([&](const Row &row) { return less_(row, key); });
    }

    // The first row that is greater than the key, which need not be in the table.
    template <class Key>
    const Row *after(const Key &key) const
    {
        return seek([&](const Row &row) { return !less_(key, row); });
    }

    // Adds the row, or replaces the one that equals it. True when it was added.
    bool put(const Row &row, Generation generation)
    {
        last_ = {};
        generation_ = generation;
        if (chunks_.empty()) {
            chunks_.push_back(std::make_unique<Chunk>());
        }
        std::size_t at = chunkOf([&](const Row &other) { return less_(other, row); });
        if (at == chunks_.size()) {
            --at; // greater than all: it goes behind the last one
        }
        std::size_t place = placeIn(*chunks_[at], [&](const Row &other) { return less_(other, row); });
        if (place < chunks_[at]->count && !less_(row, chunks_[at]->rows[place])) {
            chunks_[at]->rows[place] = row;
            chunks_[at]->generations[place] = generation;
            return false;
        }
        if (chunks_[at]->count == capacity) {
            makeRoom(at, place);
        }
        Chunk &chunk = *chunks_[at];
        std::copy_backward(chunk.rows + place, chunk.rows + chunk.count, chunk.rows + chunk.count + 1);
        std::copy_backward(chunk.generations + place, chunk.generations + chunk.count,
                           chunk.generations + chunk.count + 1);
        chunk.rows[place] = row;
        chunk.generations[place] = generation;
        ++chunk.count;
        ++size_;
        return true;
    }

    // As if the last reading, which may be under way, had brought it.
    bool put(const Row &row) { return put(row, generation_); }

    template <class Key>
    bool erase(const Key &key)
    {
        const auto before = [&](const Row &row) { return less_(row, key); };
        const std::size_t at = chunkOf(before);
        if (at == chunks_.size()) {
            return false;
        }
        Chunk &chunk = *chunks_[at];
        const std::size_t place = placeIn(chunk, before);
        if (less_(key, chunk.rows[place])) {
            return false;
        }
        last_ = {};
        std::copy(chunk.rows + place + 1, chunk.rows + chunk.count, chunk.rows + place);
        std::copy(chunk.generations + place + 1, chunk.generations + chunk.count, chunk.generations + place);
        --chunk.count;
        --size_;
        mergeSmall(at);
        return true;
    }

    // Takes out all rows for which leaves(row) says so, in one pass; that one must not look at the table.
    template <class Leaves>
    void eraseIf(Leaves leaves)
    {
        eraseEach(0, chunks_.size(), [&](const Row &row, Generation) { return leaves(row); });
    }

    // Takes out all rows that were not put with this generation. Returns them, in order.
    std::vector<Row> sweep(Generation generation)
    {
        std::vector<Row> gone;
        sweep(generation, [&](const Row &row) { gone.push_back(row); });
        return gone;
    }
    // Calls visit(row) in order for each row that was not put with this generation, until it returns false.
    template <class Visit>
    void eachNotOf(Generation generation, Visit visit) const
    {
        for (const auto &chunk : chunks_) {
            for (std::size_t i = 0; i < chunk->count; ++i) {
                if (chunk->generations[i] != generation && !visit(chunk->rows[i])) {
                    return;
                }
            }
        }
    }
    // The same as sweep for tables of which a large part may go: calls gone(row), which must not look at the table.
    template <class Gone>
    void sweep(Generation generation, Gone gone)
    {
        eraseEach(0, chunks_.size(), [&](const Row &row, Generation last) {
            const bool leaves = last != generation;
            if (leaves) {
                gone(row);
            }
            return leaves;
        });
    }

    // One piece of such a pass over all rows: some `rows` of them from `from` on (nothing: from the first one), and
    // takes out those for which leaves(row, generation) says so. Where the next piece begins; nothing at the end.
    template <class Leaves>
    std::optional<Row> eraseSome(const std::optional<Row> &from, std::size_t rows, Leaves leaves)
    {
        const std::size_t begin = from ? chunkOf([&](const Row &row) { return less_(row, *from); }) : 0;
        const std::size_t end = std::min(begin + rows / capacity + 1, chunks_.size());
        std::optional<Row> next;
        if (end < chunks_.size()) {
            next = chunks_[end]->rows[0];
        }
        eraseEach(std::min(begin, end), end, leaves);
        return next;
    }

    // Calls visit(row) for each row in order.
    template <class Visit>
    void each(Visit visit) const
    {
        for (const auto &chunk : chunks_) {
            for (std::size_t i = 0; i < chunk->count; ++i) {
                visit(chunk->rows[i]);
            }
        }
    }

    // Calls visit(row) for each row from the first one that is not less than the key, until it returns false.
    template <class Key, class Visit>
    void eachFrom(const Key &key, Visit visit) const
    {
        const Row *row = atOrAfter(key);
        Place place = last_; // visit() may look for others
        while (row != nullptr && visit(*row)) {
            row = following(place);
        }
    }

    std::size_t memory() const { return chunks_.size() * sizeof(Chunk) + chunks_.capacity() * sizeof(chunks_[0]); }

  private:
    struct Chunk {
        std::size_t count = 0; // never 0 in a chunk of a table that is at rest
        Row rows[capacity];
        Generation generations[capacity];
    };

    // Of the chunks from `begin` to `end`.
    template <class Leaves>
    void eraseEach(std::size_t begin, std::size_t end, Leaves leaves)
    {
        std::size_t kept = begin; // chunks
        last_ = {};
        for (std::size_t at = begin; at < end; ++at) {
            Chunk &chunk = *chunks_[at];
            std::size_t count = 0;
            for (std::size_t i = 0; i < chunk.count; ++i) {
                if (leaves(chunk.rows[i], chunk.generations[i])) {
                    continue;
                }
                if (count != i) {
                    chunk.rows[count] = chunk.rows[i];
                    chunk.generations[count] = chunk.generations[i];
                }
                ++count;
            }
            size_ -= chunk.count - count;
            chunk.count = count;
            if (count != 0 && (kept == 0 || !moveInto(*chunks_[kept - 1], chunk))) {
                std::swap(chunks_[kept++], chunks_[at]);
            }
        }
        chunks_.erase(chunks_.begin() + static_cast<std::ptrdiff_t>(kept),
                      chunks_.begin() + static_cast<std::ptrdiff_t>(end));
    }

    // Of two chunks in a row, when the rows of both leave room in one.
    static bool moveInto(Chunk &lower, const Chunk &upper)
    {
        if (lower.count + upper.count > capacity * 3 / 4) {
            return false;
        }
        std::copy(upper.rows, upper.rows + upper.count, lower.rows + lower.count);
        std::copy(upper.generations, upper.generations + upper.count, lower.generations + lower.count);
        lower.count += upper.count;
        return true;
    }

    // The first chunk whose last row is not before what is looked for.
    template <class Before>
    std::size_t chunkOf(Before before) const
    {
        const auto found = std::partition_point(chunks_.begin(), chunks_.end(), [&](const auto &chunk) {
            return chunk->count != 0 && before(chunk->rows[chunk->count - 1]);
        });
        return static_cast<std::size_t>(found - chunks_.begin());
    }

    template <class Before>
    static std::size_t placeIn(const Chunk &chunk, Before before)
    {
        return static_cast<std::size_t>(std::partition_point(chunk.rows, chunk.rows + chunk.count, before) -
                                        chunk.rows);
    }

    struct Place {
        const Row *row = nullptr;
        const Row *end = nullptr; // of its chunk
        std::size_t chunk = 0;
    };

    const Row *placeAt(std::size_t chunk, std::size_t row, Place &place) const
    {
        if (chunk == chunks_.size()) {
            return nullptr;
        }
        const Chunk &found = *chunks_[chunk];
        place = {found.rows + row, found.rows + found.count, chunk};
        return place.row;
    }

    // Goes on to the row behind; null when there is none, and then the place stays.
    const Row *following(Place &place) const
    {
        return place.row + 1 != place.end ? ++place.row : placeAt(place.chunk + 1, 0, place);
    }

    // The first row that is not before what is looked for. Most often it is the one behind the last that was found, or
    // that one again.
    template <class Before>
    const Row *seek(Before before) const
    {
        if (last_.row != nullptr) {
            if (before(*last_.row)) {
                const Row *const next = following(last_);
                if (next == nullptr || !before(*next)) {
                    return next;
                }
            } else if (last_.row != chunks_[last_.chunk]->rows && before(last_.row[-1])) {
                return last_.row;
            }
        }
        return search(before);
    }

    template <class Before>
    [[gnu::noinline]] const Row *search(Before before) const // which keeps what most often happens short
    {
        const std::size_t at = chunkOf(before);
        return placeAt(at, at == chunks_.size() ? 0 : placeIn(*chunks_[at], before), last_);
    }

    // Splits a full chunk and corrects the place of the row to come. Ascending input leaves full chunks behind.
    void makeRoom(std::size_t &at, std::size_t &place)
    {
        const bool atEnd = place == capacity;
        const std::size_t keep = atEnd ? capacity : capacity / 2;
        auto upper = std::make_unique<Chunk>();
        Chunk &lower = *chunks_[at];
        std::copy(lower.rows + keep, lower.rows + capacity, upper->rows);
        std::copy(lower.generations + keep, lower.generations + capacity, upper->generations);
        upper->count = capacity - keep;
        lower.count = keep;
        chunks_.insert(chunks_.begin() + static_cast<std::ptrdiff_t>(at) + 1, std::move(upper));
        if (atEnd || place > keep) {
            ++at;
            place -= keep;
        }
    }

    // Keeps memory in proportion to the rows: a chunk that has become small moves into a neighbour with room.
    void mergeSmall(std::size_t at)
    {
        if (chunks_[at]->count == 0) {
            chunks_.erase(chunks_.begin() + static_cast<std::ptrdiff_t>(at));
            return;
        }
        if (chunks_[at]->count > capacity / 4 || chunks_.size() == 1) {
            return;
        }
        const std::size_t left = at == 0 ? 0 : at - 1;
        if (moveInto(*chunks_[left], *chunks_[left + 1])) {
            chunks_.erase(chunks_.begin() + static_cast<std::ptrdiff_t>(left) + 1);
        }
    }

    std::vector<std::unique_ptr<Chunk>> chunks_;
    std::size_t size_ = 0;
    Generation generation_ = 0; // of the last row that a reading brought
    mutable Place last_;        // that a lookup has found; forgotten when rows move
    [[no_unique_address]] Less less_;
};

} // namespace ipmib::platform
