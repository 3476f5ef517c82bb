// SPDX-License-Identifier: BSD-3-Clause
// Which contract a library was built for (include/ipmib/version.h).
#pragma once

#include <ipmib/contract_note.h>

#include <optional>
#include <string>

namespace ipmib::host
{

// The note of a library's file; none when it has none, or is no library of this machine's kind: that is for the loader
// to say. Nothing of the library runs.
std::optional<IpmibContractNote> contractOf(const std::string &path);

// Throws PluginError, which names the part and both versions, when the library was built for a contract that is not
// this host's.
void requireContract(const std::string &path);

// "records.h 1.0, platform.h 1.0, message.h 1.0, module.h 1.0"
std::string contractText(const IpmibContractNote &note);

} // namespace ipmib::host
