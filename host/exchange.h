// SPDX-License-Identifier: BSD-3-Clause
// One request to the module and its reply.
#pragma once

#include "byte_store.h"
#include "message.h"
#include "row_key.h"
#include "tree_index.h"

#include <cstdint>
#include <span>

namespace ipmib::host
{

enum class Outcome {
    answered,
    noRow,   // get: no such row; get-next: no row follows
    unusable // an error that no request of ours deserves, or a reply that cannot be read; problem() says which
};

class Exchange
{
  public:
    explicit Exchange(MorCallback callback) : callback_(callback), reply_(store_) {}

    // Forgets the values of the packet before.
    void beginPacket() { store_.clear(); }

    // Asks for the parameters that are wanted of one row. A get-next without a key asks for the first row; one that is
    // answered has stored the row's key.
    Outcome get(const Table &table, const RowKey &key, std::span<const std::uint32_t> wanted);
    Outcome getNext(const Table &table, const RowKey *key, std::span<const std::uint32_t> wanted, RowKey &row);

    // The latest reply's value for a parameter, or null. `place` is its place among those that were wanted.
    const ReplyValue *value(std::uint32_t parameter, std::size_t place) const;
    // A key's part as if the module had answered it.
    ReplyValue valueOf(const IndexPart &part, const RowKey &key, std::size_t i);
    // What is wrong with the latest reply, or null.
    const char *problem() const { return problem_; }
    std::uint64_t count() const { return count_; }

  private:
    Outcome send(const Table &table, std::uint32_t operation, const RowKey *key, std::span<const std::uint32_t> wanted);
    bool readRow(const Table &table, RowKey &row);

    MorCallback callback_;
    ByteStore store_;
    MorRequest request_;
    MorReply reply_;
    std::size_t firstValue_ = 0; // of the reply's values, the one behind the index
    const char *problem_ = nullptr;
    std::uint64_t count_ = 0;
};

} // namespace ipmib::host
