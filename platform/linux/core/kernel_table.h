// SPDX-License-Identifier: BSD-3-Clause
// One table of the kernel: how to ask for it, and what a message says about its rows.
#pragma once

#include "core/rtnetlink.h"
#include "ordered_table.h"

#include <vector>

namespace ipmib::platform
{

class KernelTable
{
  public:
    virtual ~KernelTable() = default;

    // For log lines.
    virtual const char *name() const = 0;
    // The RTNLGRP_* groups that announce changes.
    virtual std::vector<unsigned> groups() const = 0;
    // The requests that together dump the table: how many there are, and one of them, which is sent now: what comes
    // from now on answers it.
    virtual std::size_t dumps() const { return 1; }
    virtual RtnetlinkRequest dump(std::size_t which) = 0;

    // A message of a dump: its rows come in, or are changed, and have this generation.
    virtual void applyDump(const nlmsghdr &message, Generation generation) = 0;
    // All dumps of a reading have ended well: rows that do not have this generation are gone. Called until it is true,
    // packets between: a large table does this in pieces.
    virtual bool sweep(Generation generation) = 0;
    // Whether the kernel, when it announces this while it dumps the table, may have passed other rows over without
    // marking the dump as interrupted.
    virtual bool disturbs(const nlmsghdr &) const { return false; }
    // Whether the kernel goes on with a dump that has been read in part from the first row on, passing over those that
    // have been read, when the table has changed meanwhile: a read of a large table takes it milliseconds then, all in
    // one system call. Such a table is not read while it changes much, and with rests when it must be.
    virtual bool needsQuiet() const { return false; }
    // Whether every packet waits until all that was announced is applied. Those who ask for rows of another table call
    // Mirror::readForPacket first.
    virtual bool isForEveryPacket() const { return false; }
    // An announcement.
    virtual void applyChange(const nlmsghdr &message) = 0;
};

} // namespace ipmib::platform
