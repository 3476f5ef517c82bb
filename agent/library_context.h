// SPDX-License-Identifier: BSD-3-Clause
// The list of contexts that the library keeps.
#pragma once

#include <string>

namespace ipmib::agent
{

// As if there had never been the context: nobody may ask in it, and vacmContextTable does not list it. All that was
// registered in it has been unregistered.
void forgetContext(const std::string &name);

// The library goes through a list whenever it looks for a context; it finds this one at once.
void bringToFront(const std::string &name);

} // namespace ipmib::agent
