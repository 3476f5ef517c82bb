// SPDX-License-Identifier: BSD-3-Clause
// The instance of a platform that the services and the hooks answer for.
#pragma once

namespace ipmib::platform
{

// Null before the start and after the stop; then every service fails.
template <class Platform>
inline Platform *selected = nullptr;

} // namespace ipmib::platform
