// SPDX-License-Identifier: BSD-3-Clause
// What the library keeps of a context in which nothing is registered any more.
#pragma once

#include <string>

namespace ipmib::agent
{

// As if there had never been the context: nobody may ask in it, and vacmContextTable does not list it. All that was
// registered in it has been unregistered.
void forgetContext(const std::string &name);

} // namespace ipmib::agent
