// SPDX-License-Identifier: BSD-3-Clause
// Put together once, at the start: trees into one list, and each source's objects into tables.
#include "catalogue.h"

#include "followed_rows.h"
#include "merged_source.h"
#include "recorded_over.h"
#include "rest_of_table.h"
#include "row_key.h"

#include <algorithm>
#include <set>

namespace ipmib::host
{
namespace
{

bool isBelow(const Oid &left, const Oid &right)
{
    return std::is_lt(compare(left.view(), right.view()));
}

bool isSame(const Oid &left, const Oid &right)
{
    return std::ranges::equal(left.view(), right.view());
}

bool haveOnePlace(const Object &left, const Object &right)
{
    return isSame(left.oid, right.oid);
}

} // namespace

Catalogue::Catalogue(Contents contents) : contents_(std::move(contents))
{
    for (const Contents::Tree &tree : contents_.trees) {
        describe(*tree.root, tree.parent);
    }
    std::ranges::stable_sort(objects_, isBelow, &Object::oid);
    objects_.erase(std::unique(objects_.begin(), objects_.end(), haveOnePlace), objects_.end());
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        byName_.emplace(objects_[i].node->pszName, i);
    }
    findServed();
}

Catalogue::~Catalogue() = default;

void Catalogue::describe(const MibTreeNode &node, Oid oid)
{
    oid.append(node.ulSubId);
    objects_.push_back({&node, oid});
    for (const MibTreeNode *child = node.pstFirstChild; child != nullptr; child = child->pstNextSibling) {
        describe(*child, oid);
    }
}

// What nobody has described is not served: it would have no name.
void Catalogue::findServed()
{
    for (const Source *source : contents_.sources) {
        for (const Oid &oid : source->objects()) {
            if (const Object *object = find(oid.view())) {
                objects_[static_cast<std::size_t>(object - objects_.data())].isServed = true;
            }
        }
    }
    const Object *above = nullptr; // the latest entry
    for (const Object &object : objects_) {
        if (object.node->ulKind == MIB_NODE_ENTRY) {
            above = &object;
        } else if (object.isServed) {
            addTable(object.node->ulKind == MIB_NODE_COLUMN && above != nullptr ? *above : object, object);
        }
    }
    for (ServedTable &table : tables_) {
        table.source = sourceOf(table);
        if (table.isScalar() && table.source != contents_.sources.front()) {
            nameByGroup(table);
        }
    }
}

// `above` is the entry of a column, and a scalar itself.
void Catalogue::addTable(const Object &above, const Object &object)
{
    if (!tables_.empty() && isSame(tables_.back().root, above.oid)) {
        tables_.back().objects.push_back(object.oid);
        return;
    }
    ServedTable &table = tables_.emplace_back();
    const bool isScalar = &above == &object;
    table.name = isScalar ? object.node->pszName : above.node->pstParent->pszName;
    table.identifier = isScalar ? object.oid : Oid(above.oid.view().first(above.oid.size() - 1));
    table.root = above.oid;
    table.inner = above.oid;
    if (isScalar) {
        table.inner.append(0);
    }
    table.objects = {object.oid};
    table.isSuperior = std::ranges::find(contents_.superior, table.name) != contents_.superior.end();
}

void Catalogue::nameByGroup(ServedTable &scalar) const
{
    const Object *group = find(scalar.identifier.view().first(scalar.identifier.size() - 1));
    if (group != nullptr && std::ranges::find(contents_.groups, group->node->pszName) != contents_.groups.end()) {
        scalar.name = group->node->pszName;
        scalar.isOfGroup = true;
    }
}

Source *Catalogue::sourceOf(const ServedTable &table)
{
    std::vector<Source *> sources;
    for (Source *source : contents_.sources) {
        const std::vector<Oid> objects = source->objects();
        if (std::ranges::any_of(objects, [&](const Oid &oid) { return isWithin(oid.view(), table.root.view()); })) {
            sources.push_back(source);
        }
    }
    const auto rest = std::ranges::find(contents_.rests, table.name, &Contents::Rest::table);
    if (rest != contents_.rests.end() && sources.front() == contents_.sources.front()) {
        const bool isWholeIndex = columnsOf(*find(table.root.view())->node->pstIndex).size() == 1;
        made_.push_back(std::make_unique<RestOfTable>(*sources.front(), table.root.view(), rest->number, isWholeIndex));
        sources.front() = made_.back().get();
    }
    Source *source = sources.front();
    if (sources.size() > 1) {
        source = made_.emplace_back(std::make_unique<MergedSource>(table.root.view(), sources)).get();
    }
    if (contents_.platform != nullptr && contents_.platform->recorded != nullptr) {
        source = made_.emplace_back(std::make_unique<RecordedOver>(source, *contents_.platform->recorded)).get();
    }
    const auto followed = std::ranges::find(contents_.followed, table.name, &Contents::Followed::table);
    if (followed != contents_.followed.end() && contents_.platform != nullptr &&
        contents_.platform->are_current != nullptr) {
        source =
            made_.emplace_back(std::make_unique<FollowedRows>(*source, contents_.platform->are_current, followed->rows))
                .get();
    }
    return source;
}

const Object *Catalogue::named(std::string_view name) const
{
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : &objects_[found->second];
}

const Object *Catalogue::find(OidView oid) const
{
    const auto found =
        std::lower_bound(objects_.begin(), objects_.end(), oid, [](const Object &object, OidView wanted) {
            return std::is_lt(compare(object.oid.view(), wanted));
        });
    return found != objects_.end() && std::is_eq(compare(found->oid.view(), oid)) ? &*found : nullptr;
}

const Object *Catalogue::deepest(OidView oid) const
{
    for (; !oid.empty(); oid = oid.first(oid.size() - 1)) {
        if (const Object *found = find(oid)) {
            return found;
        }
    }
    return nullptr;
}

const ServedTable *Catalogue::tableOf(OidView oid) const
{
    const auto behind =
        std::upper_bound(tables_.begin(), tables_.end(), oid, [](OidView wanted, const ServedTable &table) {
            return std::is_lt(compare(wanted, table.root.view()));
        });
    return behind != tables_.begin() && isWithin(oid, std::prev(behind)->root.view()) ? &*std::prev(behind) : nullptr;
}

void Catalogue::select(std::size_t instance)
{
    for (Source *source : contents_.sources) {
        source->select(instance);
    }
    for (const auto &source : made_) {
        source->select(instance);
    }
}

void Catalogue::forget(std::size_t instance)
{
    for (Source *source : contents_.sources) {
        source->forget(instance);
    }
}

void Catalogue::beginPacket()
{
    if (contents_.platform != nullptr && contents_.platform->begin_packet != nullptr) {
        contents_.platform->begin_packet();
    }
    for (Source *source : contents_.sources) {
        source->beginPacket();
    }
    for (const auto &source : made_) {
        source->beginPacket();
    }
}

std::size_t countNames(const std::vector<const ServedTable *> &tables)
{
    std::set<std::string_view> names;
    for (const ServedTable *table : tables) {
        names.insert(table->name);
    }
    return names.size();
}

std::string textOf(OidView identifier)
{
    std::string text;
    for (const SubId id : identifier) {
        text += (text.empty() ? "" : ".") + std::to_string(id);
    }
    return text;
}

} // namespace ipmib::host
