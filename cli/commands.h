// SPDX-License-Identifier: BSD-3-Clause
// The commands of ipmibctl. Each is given the words behind its own name, writes to standard output, and answers with an
// exit status. They throw host::UsageError for words that they do not understand, std::runtime_error for the rest.
#pragma once

#include "options.h"
#include "session.h"

#include <string>
#include <vector>

namespace ipmib::cli
{

using Words = std::vector<std::string>;

int show(Session &session, const Options &options, const Words &words);
int watch(Session &session, const Options &options, const Words &words);
int get(Session &session, const Options &options, const Words &words);
int walk(Session &session, const Options &options, const Words &words);
int drawTree(Session &session, const Options &options, const Words &words);

} // namespace ipmib::cli
