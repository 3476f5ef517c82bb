// SPDX-License-Identifier: BSD-3-Clause
// Takes a packet's variables apart into rows, asks for each row once, and puts the values in their places.
#include "resolver.h"

#include "exchange.h"
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

// A variable on its way: the leaf that is tried, and the instance there that it asks for, or behind.
struct Pending {
    Variable *variable;
    std::size_t leaf;
    OidView instance;
    bool inclusive;
    std::size_t place = 0; // among the columns that are wanted of the row
};

} // namespace

class Resolver::Impl
{
  public:
    Impl(const MibTreeNode &root, MorCallback callback, Log log)
        : leaves_(root), exchange_(callback), search_(exchange_), log_(log)
    {
        for (std::size_t i = 0; i < leaves_.size(); ++i) {
            const Leaf &leaf = leaves_[i];
            const bool isColumn = leaf.node->ulKind == MIB_NODE_COLUMN;
            const OidView region = leaf.name.first(leaf.name.size() - (isColumn ? 1 : 0));
            if (regions_.empty() || compare(regions_.back().root.view(), region) != 0) {
                regions_.push_back({Oid(region), isColumn ? leaf.node->pstParent : leaf.node});
            }
        }
    }

    const std::vector<Region> &regions() const { return regions_; }
    std::uint64_t requestCount() const { return exchange_.count(); }

    void get(std::span<Variable> variables)
    {
        begin();
        for (Variable &variable : variables) {
            const std::size_t leaf = leaves_.leafOf(variable.asked);
            if (leaf == leaves_.size()) {
                variable.status = Status::noSuchObject;
                continue;
            }
            pending_.push_back({&variable, leaf, variable.asked.subspan(leaves_[leaf].name.size()), true});
        }
        while (nextRow()) {
            const Outcome outcome = askGet();
            for (const Pending &each : row_) {
                setValue(each, outcome, Status::noSuchInstance);
            }
        }
    }

    void getNext(std::span<Variable> variables, OidView region)
    {
        begin();
        const auto [first, last] = leaves_.leavesOf(region);
        for (Variable &variable : variables) {
            const bool isBefore = compare(variable.asked, region) < 0;
            const OidView from = isBefore ? region : variable.asked;
            const std::size_t leaf = leaves_.leafOf(from);
            if (leaf < leaves_.size()) {
                start({&variable, leaf, from.subspan(leaves_[leaf].name.size()), isBefore}, last);
            } else {
                start({&variable, std::max(leaves_.leafAfter(from), first), {}, false}, last);
            }
        }
        while (nextRow()) {
            const Outcome outcome = askNext();
            for (const Pending &each : row_) {
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
        pending_.clear();
    }

    void start(const Pending &pending, std::size_t last)
    {
        if (pending.leaf < last) {
            pending_.push_back(pending);
        } else {
            pending.variable->status = Status::endOfRegion;
        }
    }

    // Takes those that concern the same row as the first one out of the pending ones.
    bool nextRow()
    {
        row_.clear();
        rest_.clear();
        wanted_.clear();
        for (Pending &each : pending_) {
            if (!row_.empty() && !isSameRow(each, row_.front())) {
                rest_.push_back(each);
                continue;
            }
            if (const Leaf &leaf = leaves_[each.leaf]; !leaf.isIndex()) {
                const auto known = std::find(wanted_.begin(), wanted_.end(), leaf.node->ulParamId);
                each.place = static_cast<std::size_t>(known - wanted_.begin());
                if (known == wanted_.end()) {
                    wanted_.push_back(leaf.node->ulParamId);
                }
            }
            row_.push_back(each);
        }
        std::swap(pending_, rest_);
        return !row_.empty();
    }

    bool isSameRow(const Pending &left, const Pending &right)
    {
        return leaves_[left.leaf].table == leaves_[right.leaf].table && left.inclusive == right.inclusive &&
               std::ranges::equal(left.instance, right.instance);
    }

    Outcome askGet()
    {
        Table &table = *leaves_[row_.front().leaf].table;
        found_ = row_.front().instance;
        const bool isInstance =
            table.index.empty() ? std::ranges::equal(found_, scalarInstance) : readKey(table.index, found_, key_);
        return isInstance ? noted(table, exchange_.get(table, key_, wanted_), exchange_.problem()) : Outcome::noRow;
    }

    Outcome askNext()
    {
        const Pending &from = row_.front();
        Table &table = *leaves_[from.leaf].table;
        if (!table.index.empty()) {
            const Outcome outcome = search_.find(table, {from.instance, from.inclusive}, wanted_);
            found_ = search_.instance();
            key_ = search_.row();
            return noted(table, outcome, search_.problem());
        }
        // A module answers scalars by get alone.
        const auto order = compare(scalarInstance, from.instance);
        if (order < 0 || (order == 0 && !from.inclusive)) {
            return Outcome::noRow;
        }
        found_ = scalarInstance;
        return noted(table, exchange_.get(table, key_, wanted_), exchange_.problem());
    }

    // Logs what was wrong with an answer about a table, once.
    Outcome noted(Table &table, Outcome outcome, const char *problem)
    {
        if (problem && *problem) {
            complain(table.complained, table.name, problem);
        }
        return outcome;
    }

    void complain(bool &complained, const char *object, const std::string &problem)
    {
        if (log_ && !std::exchange(complained, true)) {
            log_(LOG_WARNING, (std::string(object) + ": " + problem).c_str());
        }
    }

    // False when the row found lies behind the region.
    bool setName(const Pending &pending, OidView region)
    {
        Oid &name = pending.variable->name;
        name = Oid(leaves_[pending.leaf].name);
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
            part = exchange_.valueOf(leaf.table->index[leaf.indexPart], key_, leaf.indexPart);
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
    Exchange exchange_;
    SuccessorSearch search_;
    Log log_;

    // Of the packet and of the row that are being answered; members, so that they keep their memory.
    std::vector<Pending> pending_;
    std::vector<Pending> rest_;
    std::vector<Pending> row_;
    std::vector<std::uint32_t> wanted_;
    RowKey key_;
    OidView found_; // the row's instance
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

void Resolver::get(std::span<Variable> variables)
{
    impl_->get(variables);
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
