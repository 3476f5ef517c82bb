// SPDX-License-Identifier: BSD-3-Clause
// The interfaces of this network namespace, by ifIndex.
#pragma once

#include "core/kernel_table.h"
#include "interface_list.h"
#include "ordered_table.h"

#include <net/if.h>

#include <algorithm>
#include <functional>

namespace ipmib::platform
{

// As long as the interface tables let it be; the kernel keeps up to 255 bytes.
inline constexpr std::size_t maxAlias = 64;

struct Link {
    std::uint32_t ifIndex;
    std::uint32_t flags; // IFF_*
    std::uint32_t mtu;
    std::uint32_t lower;      // the interface that it runs over, a VLAN's; 0 for none
    std::uint32_t master;     // the interface that it is a port of, a bridge's or a bond's; 0 for none
    std::uint16_t hardware;   // ARPHRD_*
    std::uint8_t addressSize; // bytes of the link-layer address
    std::uint8_t address[32];
    std::uint8_t operState; // IF_OPER_*
    bool promiscuous;
    char name[IFNAMSIZ];
    char kind[IFNAMSIZ]; // "veth", "bridge", ...; "" for a device without one
    char alias[maxAlias + 1];

    // What the table adds to the kernel's words.
    std::uint64_t changedMs; // of the monotonic clock, when it came into this operState; 0: before the start
    std::uint64_t version;   // differs after each message of the kernel on this link
};

class LinkTable : public KernelTable
{
  public:
    // Called when an interface has gone down or away, with what the kernel may not announce row by row.
    using Handler = std::function<void(std::uint32_t ifIndex)>;
    void onDown(Handler handler) { down_ = std::move(handler); }
    // Called after each message of the kernel on a link with what was known of it before and what is now; null for one
    // that was not there, or is not any more. The first reading is not told.
    using ChangeHandler = std::function<void(const Link *before, const Link *now)>;
    void onChange(ChangeHandler handler) { changed_ = std::move(handler); }

    // Null when there is none. Pointers are good until announcements are read.
    const Link *find(std::uint32_t ifIndex) const { return links_.find(ifIndex); }
    const Link *after(std::uint32_t ifIndex) const { return links_.after(ifIndex); }
    std::size_t size() const { return links_.size(); }
    // The same interfaces as walks over a selection see them.
    const InterfaceList &list() const { return list_; }
    // Of the monotonic clock, when the last link appeared or vanished; 0: before the start.
    std::uint64_t rowsChangedMs() const { return rowsChangedMs_; }
    // The same for what runs over what, which includes links that come and go.
    std::uint64_t stackChangedMs() const { return std::max(rowsChangedMs_, relationsChangedMs_); }
    // Differs after each change.
    std::uint64_t version() const { return version_; }

    const char *name() const override { return "links"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_LINK}; }
    bool isForEveryPacket() const override { return true; } // what depends on links is everywhere
    RtnetlinkRequest dump(std::size_t which) override;
    void applyDump(const nlmsghdr &message, Generation generation) override;
    bool sweep(Generation generation) override;
    void applyChange(const nlmsghdr &message) override;

  private:
    struct ByIfIndex {
        bool operator()(const Link &a, const Link &b) const { return a.ifIndex < b.ifIndex; }
        bool operator()(const Link &a, std::uint32_t b) const { return a.ifIndex < b; }
        bool operator()(std::uint32_t a, const Link &b) const { return a < b.ifIndex; }
    };
    using Links = OrderedTable<Link, ByIfIndex>;

    // Adds what the kernel does not say, from what was known of the link, if anything.
    void complete(Link &link, const Link *before);
    void reportChange(const Link &before, const Link *now);
    void callChanged(const Link *before, const Link *now) const;
    void put(Link link, Generation generation);
    void reportLoss(const Link &gone);

    Links links_;
    InterfaceList list_;  // the same ones
    bool filled_ = false; // the first reading has ended
    std::uint64_t rowsChangedMs_ = 0;
    std::uint64_t relationsChangedMs_ = 0;
    std::uint64_t version_ = 0;
    Handler down_;
    ChangeHandler changed_;
};

// What an RTM_NEWLINK message says of a link; false when it is not about one.
bool parseLink(const nlmsghdr &message, Link &link);

} // namespace ipmib::platform
