// SPDX-License-Identifier: BSD-3-Clause
// Takes a packet's variables apart into rows, asks for each row once, and puts the values in their places.
#include "resolver.h"

#include "exchange.h"
#include "row_queue.h"
#include "successor.h"
#include "syntax.h"
#include "tree_index.h"

#include <syslog.h>

#include <algorithm>
#include <utility>

namespace ipmib::host
{
namespace
{

constexpr SubId scalarInstance[] = {0};

} // namespace

class Resolver::Impl
{
  public:
    Impl(const MibTreeNode &root, MorCallback callback, Log log)
        : leaves_(root), queue_(leaves_), exchange_(callback), search_(exchange_), log_(log)
    {
        for (std::size_t i = 0; i < leaves_.size(); ++i) {
            const Leaf &leaf = leaves_[i];
            const bool isColumn = leaf.node->ulKind == MIB_NODE_COLUMN;
            const OidView region = leaf.name.first(leaf.name.size() - (isColumn ? 1 : 0));
            if (regions_.empty() || std::is_neq(compare(regions_.back().root.view(), region))) {
                regions_.push_back({Oid(region), isColumn ? leaf.node->pstParent : leaf.node});
            }
        }
    }

    const std::vector<Region> &regions() const { return regions_; }
    std::uint64_t requestCount() const { return exchange_.count(); }

    std::vector<Oid> objects()
    {
        std::vector<Oid> names;
        for (std::size_t i = 0; i < leaves_.size(); ++i) {
            names.emplace_back(leaves_[i].name);
        }
        return names;
    }

    void select(std::size_t instance) { leaves_.select(instance); }
    void forget(std::size_t instance) { leaves_.forget(instance); }

    void get(std::span<Variable> variables)
    {
        begin();
        for (Variable &variable : variables) {
            const std::size_t leaf = leaves_.leafOf(variable.asked);
            if (leaf == leaves_.size()) {
                variable.status = Status::noSuchObject;
                continue;
            }
            queue_.add({&variable, leaf, variable.asked.subspan(leaves_[leaf].name.size()), true});
        }
        while (queue_.takeRow()) {
            const Outcome outcome = askGet();
            for (const Pending &each : queue_.row()) {
                setValue(each, outcome, Status::noSuchInstance);
            }
        }
    }

    bool lowestBehind(OidView asked, Oid &lowest)
    {
        if (leaves_.leafOf(asked) < leaves_.size()) {
            lowest.assign(asked);
            return true;
        }
        const std::size_t next = leaves_.leafAfter(asked);
        return next < leaves_.size() && lowest.assign(leaves_[next].name);
    }

    void getNext(std::span<Variable> variables, OidView region)
    {
        begin();
        const auto [first, last] = leaves_.leavesOf(region);
        for (Variable &variable : variables) {
            const bool isBefore = std::is_lt(compare(variable.asked, region));
            const OidView from = isBefore ? region : variable.asked;
            const std::size_t leaf = leaves_.leafOf(from);
            if (leaf < leaves_.size()) {
                start({&variable, leaf, from.subspan(leaves_[leaf].name.size()), isBefore}, last);
            } else {
                start({&variable, std::max(leaves_.leafAfter(from), first), {}, false}, last);
            }
        }
        while (queue_.takeRow()) {
            const Outcome outcome = askNext();
            for (const Pending &each : queue_.row()) {
                if (outcome == Outcome::noRow || (outcome == Outcome::answered && !setName(each, region))) {
                    start({each.variable, leafBehind(each), {}, false}, last);
                } else {
                    setValue(each, outcome, Status::endOfRegion);
                }
            }
        }
    }

  private:
    void begin()
    {
        exchange_.beginPacket();
        queue_.clear();
    }

    void start(const Pending &pending, std::size_t last)
    {
        if (pending.leaf < last) {
            queue_.add(pending);
        } else {
            pending.variable->status = Status::endOfRegion;
        }
    }

    Outcome askGet()
    {
        Table &table = *leaves_[queue_.row().front().leaf].table;
        found_ = queue_.row().front().instance;
        foundKey_ = &key_;
        const bool isInstance =
            table.index.empty() ? std::ranges::equal(found_, scalarInstance) : readKey(table.index, found_, key_);
        return isInstance ? getRow(table) : Outcome::noRow;
    }

    Outcome getRow(Table &table)
    {
        const Outcome outcome = exchange_.get(table, key_, queue_.wanted());
        complain(table.complained, table.name, exchange_.problem());
        return outcome;
    }

    Outcome askNext()
    {
        const Pending &from = queue_.row().front();
        Table &table = *leaves_[from.leaf].table;
        if (!table.index.empty()) {
            const Outcome outcome = search_.find(table, {from.instance, from.inclusive}, queue_.wanted());
            found_ = search_.instance();
            foundKey_ = &search_.row();
            complain(table.complained, table.name, search_.problem());
            return outcome;
        }
        // A module answers scalars by get alone.
        const auto order = compare(scalarInstance, from.instance);
        if (std::is_lt(order) || (std::is_eq(order) && !from.inclusive)) {
            return Outcome::noRow;
        }
        found_ = scalarInstance;
        return getRow(table);
    }

    // Logs what was wrong with an answer, if anything was; once for each object.
    void complain(bool &complained, const char *object, const char *problem)
    {
        if (log_ && problem && !std::exchange(complained, true)) {
            log_(LOG_WARNING, (std::string(object) + ": " + problem).c_str());
        }
    }

    // False when the row found lies behind the region.
    bool setName(const Pending &pending, OidView region)
    {
        Oid &name = pending.variable->name;
        name.assign(leaves_[pending.leaf].name);
        return name.append(found_) && isWithin(name.view(), region);
    }

    // Where a variable goes on whose column has no further row. Rows have all columns, so a table without any row has
    // none in the columns that follow either.
    std::size_t leafBehind(const Pending &pending)
    {
        const Table &table = *leaves_[pending.leaf].table;
        const bool isEmptyTable = pending.instance.empty() && !table.index.empty();
        return isEmptyTable ? table.end : pending.leaf + 1;
    }

    void setValue(const Pending &pending, Outcome outcome, Status withoutRow)
    {
        Variable &variable = *pending.variable;
        variable.status = outcome == Outcome::noRow ? withoutRow : Status::genErr;
        if (outcome != Outcome::answered) {
            return;
        }
        Leaf &leaf = leaves_[pending.leaf];
        ReplyValue part;
        const ReplyValue *value = exchange_.value(leaf.node->ulParamId, pending.place);
        if (leaf.isIndex()) {
            part = exchange_.valueOf(leaf.table->index[leaf.indexPart], *foundKey_, leaf.indexPart);
            value = &part;
        }
        const auto checked = value ? checkedValue(*leaf.node->pstSyntax, *value) : std::nullopt;
        if (!checked) {
            complain(leaf.complained, leaf.node->pszName,
                     value ? "the module's value is not of the declared syntax" : "the module answers without a value");
            return;
        }
        variable.value = *checked;
        variable.status = Status::ok;
    }

    std::vector<Region> regions_;
    TreeIndex leaves_;
    RowQueue queue_;
    Exchange exchange_;
    SuccessorSearch search_;
    Log log_;

    RowKey key_;                     // of a get
    OidView found_;                  // the row's instance
    const RowKey *foundKey_ = &key_; // the same as a key
};

Resolver::Resolver(const MibTreeNode &root, MorCallback callback, Log log)
    : impl_(std::make_unique<Impl>(root, callback, log))
{
}

Resolver::~Resolver() = default;

const std::vector<Resolver::Region> &Resolver::regions() const
{
    return impl_->regions();
}

std::vector<Oid> Resolver::objects() const
{
    return impl_->objects();
}

void Resolver::select(std::size_t instance)
{
    impl_->select(instance);
}

void Resolver::forget(std::size_t instance)
{
    impl_->forget(instance);
}

void Resolver::get(std::span<Variable> variables)
{
    impl_->get(variables);
}

bool Resolver::lowestBehind(OidView asked, Oid &lowest)
{
    return impl_->lowestBehind(asked, lowest);
}

void Resolver::getNext(std::span<Variable> variables, OidView region)
{
    impl_->getNext(variables, region);
}

std::uint64_t Resolver::requestCount() const
{
    return impl_->requestCount();
}

} // namespace ipmib::host
